// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"
#include "toml_table.hpp"

#include <vector>

namespace nimba::sim {

// Reads the [[memory_module]] tables of a machine file; without any mention of them, the machine
// has two modules of different channels. Throws MachineFileError.
std::vector<MemoryModule> read_memory_modules(const TableReader& machine);

}  // namespace nimba::sim
