// SPDX-License-Identifier: MIT
// A look at a JSON text before anything is kept of it.
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>

namespace nimba::archive {

// Goes through a text as nlohmann::json::sax_parse wants it, and ends where it is nested too deep
// or has too many values. Each level and each value take many times their byte in the text.
class JsonPass {
  public:
    using Json = nlohmann::json;

    JsonPass(std::size_t deepest, std::size_t most_values)
        : deepest_{deepest}, most_values_{most_values}
    {
    }

    [[nodiscard]] bool is_too_deep() const { return depth_ > deepest_; }
    [[nodiscard]] std::size_t values() const { return values_; }
    [[nodiscard]] bool has_too_many_values() const { return values_ > most_values_; }

    bool null() { return add_value(); }
    bool boolean(bool /*value*/) { return add_value(); }
    bool number_integer(Json::number_integer_t /*value*/) { return add_value(); }
    bool number_unsigned(Json::number_unsigned_t /*value*/) { return add_value(); }
    bool number_float(Json::number_float_t /*value*/, const std::string& /*text*/)
    {
        return add_value();
    }
    bool string(std::string& /*value*/) { return add_value(); }
    static bool binary(Json::binary_t& /*value*/) { return false; }
    static bool key(std::string& /*key*/) { return true; }

    bool start_object(std::size_t /*members*/) { return enter(); }
    bool end_object() { return leave(); }
    bool start_array(std::size_t /*elements*/) { return enter(); }
    bool end_array() { return leave(); }

    static bool parse_error(std::size_t /*place*/, const std::string& /*text*/,
                            const Json::exception& /*error*/)
    {
        return false;
    }

  protected:
    [[nodiscard]] std::size_t depth() const { return depth_; }

  private:
    bool add_value() { return ++values_ <= most_values_; }
    bool enter() { return add_value() && ++depth_ <= deepest_; }

    bool leave()
    {
        --depth_;
        return true;
    }

    std::size_t deepest_;
    std::size_t most_values_;
    std::size_t depth_ = 0;
    std::size_t values_ = 0;
};

}  // namespace nimba::archive
