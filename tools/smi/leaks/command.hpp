// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "leaks": the groups of like allocations, and how they grow.
Report leaks_command(const Options& options);

}  // namespace nimba::smi
