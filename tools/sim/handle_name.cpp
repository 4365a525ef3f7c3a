// SPDX-License-Identifier: MIT
#include "handle_name.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace nimba::sim {
namespace {

constexpr std::size_t kLongestName = 255;  // of a file, in bytes

bool is_file_name(const std::string& text)
{
    const auto is_fit = [](unsigned char c) {
        return std::isalnum(c) != 0 || c == '_' || c == '-' || c == '.';
    };
    return !text.empty() && text.size() <= kLongestName && text.front() != '.' &&
           std::ranges::all_of(text, is_fit);
}

}  // namespace

std::optional<std::string> handle_name(const NodeValue& handle, std::size_t least_digits)
{
    if (const auto* number = std::get_if<int64_t>(&handle)) {
        return fmt::format("{:0{}x}", *number, least_digits);
    }
    const auto* text = std::get_if<std::string>(&handle);
    return text != nullptr && is_file_name(*text) ? std::optional{*text} : std::nullopt;
}

std::optional<int64_t> shown_handle(const NodeValue& handle)
{
    if (const auto* number = std::get_if<int64_t>(&handle)) {
        return *number;
    }
    const auto* text = std::get_if<std::string>(&handle);
    if (text == nullptr) {
        return std::nullopt;
    }
    int64_t number = 0;
    std::from_chars(text->data(), text->data() + text->size(), number, 16);
    return fmt::format("{:x}", number) == *text ? std::optional{number} : std::nullopt;
}

}  // namespace nimba::sim
