// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/top/canvas.hpp"
#include "tools/smi/top/state.hpp"

#include <cstddef>

namespace nimba::smi::top {

// Draws the gauge of that number for the adapter that is shown: in a frame its title, its value
// now, its values before as an area, the time that these cover, and the end of its scale. `old`:
// the newest value is not one of now.
void draw_gauge(Canvas& canvas, const Area& area, const State& state, std::size_t number, bool old);

}  // namespace nimba::smi::top
