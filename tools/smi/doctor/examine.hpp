// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/doctor/check.hpp"
#include "tools/smi/options.hpp"

#include <vector>

namespace nimba::smi {

// Makes all checks, those of adapters for the ones that the options choose.
std::vector<Section> examine(const Options& options);

}  // namespace nimba::smi
