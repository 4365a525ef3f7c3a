// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"

#include <string>

namespace nimba::sim {

// Reads a machine file, whose keys nimba-sim-machine(5) describes. Throws MachineFileError.
Machine read_machine(const std::string& file);

}  // namespace nimba::sim
