// SPDX-License-Identifier: MIT
// The faces of "info".
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"

#include <string>

namespace nimba::smi {

// A table for each adapter that answered; empty when none did.
std::string info_text(const MachineSnapshot& snapshot);

// A header line, and one line for each field of each adapter that answered.
std::string info_csv(const MachineSnapshot& snapshot);

// The document "nimba-smi.info.1".
std::string info_json(const MachineSnapshot& snapshot);

}  // namespace nimba::smi
