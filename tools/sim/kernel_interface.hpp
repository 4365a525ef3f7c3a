// SPDX-License-Identifier: MIT
#pragma once

#include "environment.hpp"
#include "machine.hpp"

#include <filesystem>
#include <vector>

namespace nimba::sim {

// Puts stand-ins for `libraries` into a new directory `directory`, under the names that they are
// loaded by, and makes the loader look there first. `stand_ins` has them all, as
// <size function>/<file>. Throws TestBedError.
void install_kernel_interfaces(const std::vector<KernelInterface>& libraries,
                               const std::filesystem::path& stand_ins,
                               const std::filesystem::path& directory, Environment& environment);

}  // namespace nimba::sim
