// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/pagetable/process_space.hpp"
#include "tools/smi/pagetable/summary.hpp"

#include <optional>
#include <vector>

namespace nimba::smi {

// The address spaces of the processes that the options choose, with their allocations. When the
// worker is lost on the way, those before it.
std::vector<ProcessSpace> collect_spaces(const Options& options, std::vector<Problem>& problems);

// Likewise their sums, for which no more than one address space is held at a time. Nothing when the
// driver could not be read.
std::optional<std::vector<ProcessSums>> collect_sums(const Options& options,
                                                     std::vector<Problem>& problems);

}  // namespace nimba::smi
