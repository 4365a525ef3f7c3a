// SPDX-License-Identifier: MIT
#include "tools/archive/document.hpp"

#include "tools/archive/archive_error.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace nimba::archive {
namespace {

constexpr std::size_t kDeepest = 32;
constexpr std::size_t kMostMembers = 1000;

struct Form {
    std::string_view name;
    std::string_view schema;
};

constexpr std::array<Form, 7> kForms{{{kOverviewDocument, "nimba-smi.overview.1"},
                                      {"version", "nimba-smi.version.1"},
                                      {"dvfs", "nimba-smi.dvfs.1"},
                                      {"alloc", "nimba-smi.alloc.1"},
                                      {"leaks", "nimba-smi.leaks.1"},
                                      {"pagetable", "nimba-smi.pagetable-map.1"},
                                      {"doctor", "nimba-smi.doctor.1"}}};

const Form* form_of(std::string_view name)
{
    const auto* const found = std::ranges::find(kForms, name, &Form::name);
    return found == kForms.end() ? nullptr : found;
}

// Goes through a text without keeping it. A member function that returns false ends that.
class Check final {
  public:
    using Json = nlohmann::json;

    [[nodiscard]] const std::string& schema() const { return schema_; }

    bool null() { return scalar(); }
    bool boolean(bool /*value*/) { return scalar(); }
    bool number_integer(Json::number_integer_t /*value*/) { return scalar(); }
    bool number_unsigned(Json::number_unsigned_t /*value*/) { return scalar(); }
    bool number_float(Json::number_float_t /*value*/, const std::string& /*text*/)
    {
        return scalar();
    }
    static bool binary(Json::binary_t& /*value*/) { return false; }

    bool string(std::string& value)
    {
        if (members_.size() == 1 && key_ == "schema") {
            schema_ = value;
        }
        return scalar();
    }

    bool key(std::string& key)
    {
        if (members_.size() == 1) {
            key_ = key;
        }
        return ++members_.back() <= kMostMembers;
    }

    bool start_object(std::size_t /*members*/) { return enter(); }
    bool end_object() { return leave(); }
    bool start_array(std::size_t /*elements*/) { return !members_.empty() && enter(); }
    bool end_array() { return leave(); }

    static bool parse_error(std::size_t /*place*/, const std::string& /*text*/,
                            const Json::exception& /*error*/)
    {
        return false;
    }

  private:
    // The whole is an object.
    [[nodiscard]] bool scalar() const { return !members_.empty(); }

    bool enter()
    {
        members_.push_back(0);
        return members_.size() <= kDeepest;
    }

    bool leave()
    {
        members_.pop_back();
        return true;
    }

    std::vector<std::size_t> members_;  // of each object that is open; 0 of lists
    std::string key_;                   // of the outermost object
    std::string schema_;
};

}  // namespace

bool is_document(std::string_view name)
{
    return name != kOverviewDocument && form_of(name) != nullptr;
}

void check_document(std::string_view name, const std::string& place, std::string_view text)
{
    Check check;
    const Form* const form = form_of(name);
    if (form == nullptr || !nlohmann::json::sax_parse(text, &check) ||
        check.schema() != form->schema) {
        throw ArchiveError{place + " is no such document"};
    }
}

}  // namespace nimba::archive
