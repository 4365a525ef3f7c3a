// SPDX-License-Identifier: MIT
// The lines of allocation and device nodes: a key, "=" and a value.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace nimba {

// Views of the line that they were taken from.
struct KeyValue {
    std::string_view key;
    std::string_view value;
};

// Both take a line with its newline; the last character of a value is cut off whatever it is,
// so that the last line of a node without a newline loses one. A line without "=" is nothing. A key
// of more than 127 characters, or a value of more than that before the cut, ends the process.

// "key=value", as in allocation nodes.
std::optional<KeyValue> split_allocation_line(std::string_view line);

// "key = value", as in device nodes: one character on either side of the "=" belongs to neither,
// whatever it is.
std::optional<KeyValue> split_device_line(std::string_view line);

// Calls `take` with each line of `text`, the newline included.
template <typename Take>
void for_each_line(std::string_view text, Take&& take)
{
    while (!text.empty()) {
        const std::size_t newline = text.find('\n');
        const std::string_view line =
            text.substr(0, newline == std::string_view::npos ? newline : newline + 1);
        take(line);
        text.remove_prefix(line.size());
    }
}

// The low 32 bits of what strtol reads of the value in base 10; 0 without a digit.
int32_t low_bits_of_number(std::string_view value);

// The value as std::stoi reads it. Throws what that throws when there is no digit or the number
// does not fit.
int32_t number_in_range(std::string_view value, int base);

}  // namespace nimba
