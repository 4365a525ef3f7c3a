// SPDX-License-Identifier: MIT
// Text from drivers and files on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nimba::smi {

// `text` with control characters written out ("\x1b", and "\u009b" for those beyond ASCII), so that
// no terminal obeys them, and with U+FFFD for every byte that is no UTF-8. Those that turn the
// direction of a text or begin a line count as control characters.
std::string printable(std::string_view text);

// Like printable, but newlines stay: for messages of several lines.
std::string printable_lines(std::string_view text);

// Characters of a UTF-8 text: the columns that it takes.
std::size_t columns(std::string_view text);

// A printable text of so many columns at most: of a longer one the beginning, and `end` behind it
// if that fits.
std::string cut(std::string_view text, std::size_t most, std::string_view end);

}  // namespace nimba::smi
