// SPDX-License-Identifier: MIT
#include "alloc/key_value.hpp"

#include "core/fatal.hpp"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace nimba {
namespace {

constexpr std::size_t kLongestPart = 127;

std::string_view without_last(std::string_view text)
{
    return text.substr(0, text.empty() ? 0 : text.size() - 1);
}

KeyValue within_bounds(std::string_view key, std::string_view value)
{
    if (key.size() > kLongestPart) {
        stop_process("a key in a driver node has more than 127 characters");
    }
    if (value.size() > kLongestPart) {
        stop_process("a value in a driver node has more than 127 characters");
    }
    return {key, without_last(value)};
}

}  // namespace

std::optional<KeyValue> split_allocation_line(std::string_view line)
{
    const std::size_t equals_sign = line.find('=');
    if (equals_sign == std::string_view::npos) {
        return std::nullopt;
    }
    return within_bounds(line.substr(0, equals_sign), line.substr(equals_sign + 1));
}

std::optional<KeyValue> split_device_line(std::string_view line)
{
    const std::size_t equals_sign = line.find('=');
    if (equals_sign == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t value = std::min(equals_sign + 2, line.size());
    return within_bounds(without_last(line.substr(0, equals_sign)), line.substr(value));
}

int32_t low_bits_of_number(std::string_view value)
{
    return static_cast<int32_t>(std::strtol(std::string{value}.c_str(), nullptr, 10));
}

int32_t number_in_range(std::string_view value, int base)
{
    return std::stoi(std::string{value}, nullptr, base);
}

}  // namespace nimba
