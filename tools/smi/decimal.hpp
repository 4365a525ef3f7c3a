// SPDX-License-Identifier: MIT
#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace nimba::smi {

// The decimal number that all of `text` spells, when it is from `smallest` to `largest`.
template <typename Number>
std::optional<Number> parse_number(std::string_view text, Number smallest, Number largest)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc{} && end == text.data() + text.size();
    return whole && number >= smallest && number <= largest ? std::optional(number) : std::nullopt;
}

}  // namespace nimba::smi
