// SPDX-License-Identifier: MIT
// What of a text a line buffer takes.
#pragma once

#include <cstddef>
#include <string_view>

namespace nimba {

// The first line of a text that is not empty, with its newline. What a line has beyond the longest
// is a line of its own.
inline std::string_view first_line(std::string_view text, std::size_t longest)
{
    const std::string_view most = text.substr(0, longest);
    const std::size_t newline = most.find('\n');
    return most.substr(0, newline == std::string_view::npos ? newline : newline + 1);
}

// A line buffer's text ends at a NUL.
inline std::string_view text_of(std::string_view line)
{
    return line.substr(0, line.find('\0'));
}

}  // namespace nimba
