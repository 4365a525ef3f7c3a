// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/top/canvas.hpp"
#include "tools/smi/top/state.hpp"

namespace nimba::smi::top {

// Draws the table of processes, in a frame or with its title alone. `state` learns how many rows
// there is room for.
void draw_table(Canvas& canvas, const Area& area, bool framed, State& state);

}  // namespace nimba::smi::top
