// SPDX-License-Identifier: MIT
#include "tools/smi/overview/style.hpp"

#include "tools/smi/text/colour.hpp"
#include "tools/smi/text/terminal.hpp"

#include <algorithm>

namespace nimba::smi {

OverviewStyle style_of(int fd)
{
    constexpr std::size_t kFewest = 40;
    constexpr std::size_t kMost = 120;
    const OverviewStyle usual;
    return {std::clamp(terminal_columns(fd).value_or(usual.columns), kFewest, kMost),
            shows_utf8(fd), is_colour_wanted(fd)};
}

}  // namespace nimba::smi
