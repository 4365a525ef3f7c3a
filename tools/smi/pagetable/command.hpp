// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// The command "pagetable": the GPU address spaces of the processes. The list of all entries is
// written while it is read, and is not in the report.
Report pagetable_command(const Options& options);

}  // namespace nimba::smi
