// SPDX-License-Identifier: MIT
// The picture of "pagetable --svg".
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <span>
#include <string>

namespace nimba::smi {

// One panel for each process: a strip with an axis of addresses for each group of mapped patches,
// its allocations below it, and what lies between the groups as a fold.
std::string svg_text(std::span<const ProcessSpace> processes);

}  // namespace nimba::smi
