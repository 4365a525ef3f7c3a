// SPDX-License-Identifier: MIT
// The faces of "pagetable --map".
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <span>
#include <string>

namespace nimba::smi {

// A row with a bar for each patch of mapped addresses and for each gap between them, to scale;
// large gaps are folded. `coloured`: bars in the colour of their segment.
std::string map_text(std::span<const ProcessSpace> processes, bool coloured);

// The document "nimba-smi.pagetable-map.1".
std::string map_json(const AddressSplit& split, std::span<const ProcessSpace> processes,
                     std::span<const Problem> problems);

}  // namespace nimba::smi
