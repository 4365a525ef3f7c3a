// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"
#include "toml_table.hpp"

#include <vector>

namespace nimba::sim {

// Reads the [[kernel_interface]] tables of a machine file with these adapters; without any mention
// of them, the machine has what the chips of the adapters need. Throws MachineFileError.
std::vector<KernelInterface> read_kernel_interfaces(const TableReader& machine,
                                                    const std::vector<Adapter>& adapters);

}  // namespace nimba::sim
