// SPDX-License-Identifier: MIT
// The words of a command that is written to a driver's node. Each function takes a word off the
// beginning of `rest`; where there is no such word, `rest` stays as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace nimba::sim {

// Returns whether `word` was there.
bool take_word(std::string_view& rest, std::string_view word);

// A number of 32 bits, written as printf writes "%x": in lower case, without leading zeros.
std::optional<uint32_t> take_hexadecimal(std::string_view& rest);

// A number of 32 bits, written as printf writes "%d".
std::optional<int32_t> take_decimal(std::string_view& rest);

// An index below `count`, which is 10 at most, and the blank behind it.
std::optional<std::size_t> take_index(std::string_view& rest, std::size_t count);

// "1" or "0" alone, with or without a newline.
std::optional<bool> switch_of(std::string_view command);

}  // namespace nimba::sim
