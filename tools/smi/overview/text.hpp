// SPDX-License-Identifier: MIT
// The overview for people.
#pragma once

#include "tools/smi/overview/style.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"

#include <cstddef>
#include <optional>
#include <string>

namespace nimba::smi {

// A block for each adapter, a line for the GPU of another vendor, and the table of the processes,
// of which there are `top` rows at most; empty when the machine has neither.
std::string overview_text(const MachineSnapshot& snapshot, const std::optional<std::size_t>& top,
                          const OverviewStyle& style);

}  // namespace nimba::smi
