// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/overview/style.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"

#include <cstddef>
#include <optional>
#include <string>

namespace nimba::smi {

// The processes of all adapters and their memory, largest first; `top`: how many at most.
std::string process_table_text(const MachineSnapshot& snapshot,
                               const std::optional<std::size_t>& top, const OverviewStyle& style);

}  // namespace nimba::smi
