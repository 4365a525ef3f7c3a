// SPDX-License-Identifier: MIT
#pragma once

#include "environment.hpp"
#include "tools/archive/capture.hpp"

#include <filesystem>

namespace nimba::sim {

// Puts into a run's directory what a capture has beside the drivers: a dmidecode that writes what
// it wrote on the captured machine, and a home directory with the preference file; both come first
// in the environment. Throws TestBedError.
void furnish(const archive::Capture& capture, const std::filesystem::path& directory,
             Environment& environment);

}  // namespace nimba::sim
