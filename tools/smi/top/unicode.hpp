// SPDX-License-Identifier: MIT
// Characters and the room that they take on a terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi::top {

// The characters of a UTF-8 text; U+FFFD for each byte that is none.
std::u32string characters(std::string_view text);

// Appends a character to a UTF-8 text.
void append_utf8(std::string& text, char32_t character);

// The columns that a character takes: 2 for those of East Asia and for pictures, 0 for those that
// are put onto the one before.
int width_of(char32_t character);
int width_of(std::string_view text);

// The text, or as much of it as there is room for with "…" at its end.
std::string cut(std::string_view text, int width);

// The text in lines of so many columns, broken at spaces, or anywhere in a word that is too long
// for a line. Lines but the first are indented.
std::vector<std::string> in_lines(std::string_view text, int width, int indent);

// The ASCII character that comes nearest.
char32_t nearest_ascii(char32_t character);

}  // namespace nimba::smi::top
