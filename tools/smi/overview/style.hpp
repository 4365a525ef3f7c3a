// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace nimba::smi {

// What the place of the overview can show.
struct OverviewStyle {
    std::size_t columns = 80;  // of which the last stays free
    bool utf8 = false;
    bool colours = false;

    bool operator==(const OverviewStyle&) const = default;
};

// That of a terminal; plain text of 80 columns for everything else.
OverviewStyle style_of(int fd);

}  // namespace nimba::smi
