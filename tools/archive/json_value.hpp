// SPDX-License-Identifier: MIT
// Values of a JSON text from elsewhere. What is not as it has to be is told by its place.
#pragma once

#include "tools/archive/archive_error.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::archive {

// A value and where it stands ("manifest.json: samples[0].seconds").
class JsonValue final {
  public:
    JsonValue(const nlohmann::json& value, std::string place)
        : value_{&value}, place_{std::move(place)}
    {
    }

    [[noreturn]] void fail(const std::string& what) const
    {
        throw ArchiveError{place_ + " is " + what};
    }

    [[nodiscard]] bool is_null() const { return value_->is_null(); }

    [[nodiscard]] bool has(const char* key) const
    {
        return value_->is_object() && value_->contains(key);
    }

    [[nodiscard]] JsonValue member(const char* key) const
    {
        if (!value_->is_object()) {
            fail("no object");
        }
        const std::string place = place_ + (place_.ends_with(": ") ? "" : ".") + key;
        const auto found = value_->find(key);
        if (found == value_->end()) {
            throw ArchiveError{place + " is missing"};
        }
        return {*found, place};
    }

    [[nodiscard]] std::string text(std::size_t longest = 4096) const
    {
        if (!value_->is_string()) {
            fail("no text");
        }
        auto text = value_->get<std::string>();
        if (text.size() > longest || text.find('\0') != std::string::npos) {
            fail("no text of a fitting length");
        }
        return text;
    }

    [[nodiscard]] bool boolean() const
    {
        if (!value_->is_boolean()) {
            fail("neither true nor false");
        }
        return value_->get<bool>();
    }

    template <std::integral Number>
    [[nodiscard]] Number number(Number least = std::numeric_limits<Number>::min(),
                                Number greatest = std::numeric_limits<Number>::max()) const
    {
        const bool fits =
            value_->is_number_unsigned()
                ? in_range(value_->get<uint64_t>(), least, greatest)
                : value_->is_number_integer() && in_range(value_->get<int64_t>(), least, greatest);
        if (!fits) {
            fail("no number of its range");
        }
        return value_->get<Number>();
    }

    [[nodiscard]] double seconds() const
    {
        constexpr double kMost = 1e9;
        const double number = value_->is_number() ? value_->get<double>() : -1.0;
        if (!std::isfinite(number) || number < 0 || number > kMost) {
            fail("no number of seconds");
        }
        return number;
    }

    // What `read` makes of the value; nothing when it is null.
    template <typename Read>
    [[nodiscard]] auto optional(Read read) const
    {
        using Result = decltype(read(*this));
        return is_null() ? std::optional<Result>{} : std::optional<Result>{read(*this)};
    }

    void check_length(std::size_t most) const
    {
        if (value_->is_array() && value_->size() > most) {
            fail("too long a list");
        }
    }

    // What `read` makes of each element.
    template <typename Read>
    [[nodiscard]] auto list(Read read) const
    {
        if (!value_->is_array()) {
            fail("no list");
        }
        std::vector<decltype(read(*this))> elements;
        for (std::size_t i = 0; i < value_->size(); ++i) {
            elements.push_back(
                read(JsonValue{(*value_)[i], place_ + '[' + std::to_string(i) + ']'}));
        }
        return elements;
    }

  private:
    template <std::integral Wide, std::integral Number>
    static bool in_range(Wide number, Number least, Number greatest)
    {
        return std::cmp_less_equal(least, number) && std::cmp_less_equal(number, greatest);
    }

    const nlohmann::json* value_;
    std::string place_;
};

}  // namespace nimba::archive
