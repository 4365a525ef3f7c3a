// SPDX-License-Identifier: MIT
// The live view as a picture.
#pragma once

#include "tools/smi/top/canvas.hpp"
#include "tools/smi/top/state.hpp"

namespace nimba::smi::top {

// Draws what there is to see. `state` learns how much there was room for.
Canvas draw(State& state, Size size, Clock::time_point now);

}  // namespace nimba::smi::top
