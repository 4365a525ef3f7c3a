// SPDX-License-Identifier: MIT
#pragma once

#include "environment.hpp"
#include "machine.hpp"

#include <filesystem>
#include <vector>

namespace nimba::sim {

// Puts stand-ins for `libraries` into a new directory `directory`, under the names that they are
// loaded by and with the entry points that they have, and makes the loader look there first.
// `stand_in` is the file that has all entry points. Throws TestBedError.
void install_kernel_interfaces(const std::vector<KernelInterface>& libraries,
                               const std::filesystem::path& stand_in,
                               const std::filesystem::path& directory, Environment& environment);

}  // namespace nimba::sim
