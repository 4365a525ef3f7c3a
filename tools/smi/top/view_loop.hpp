// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"

#include <vector>

namespace nimba::smi::top {

// Shows the live view on the terminal until the user, a signal or the number of samples ends it.
// Returns what went wrong: without an adapter at the start, why there is none; with a number of
// samples, all problems that came up.
std::vector<Problem> show_view(const Options& options);

}  // namespace nimba::smi::top
