// SPDX-License-Identifier: MIT
#pragma once

#include <cstdarg>
#include <cstdio>

namespace nimba {

// Scans the beginning of a text by scanf's rules. Returns the number of conversions, or -1 when the
// text ends before the first.
[[gnu::format(scanf, 2, 3)]] inline int scan_text(const char* text, const char* format, ...)
{
    std::va_list targets;
    va_start(targets, format);
    const int conversions = std::vsscanf(text, format, targets);
    va_end(targets);
    return conversions;
}

}  // namespace nimba
