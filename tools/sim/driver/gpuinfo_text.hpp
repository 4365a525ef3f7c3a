// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace nimba::sim {

struct AdapterState;

// The text of /proc/gpuinfo_<card>.
std::string gpuinfo_text(const AdapterState& state);

}  // namespace nimba::sim
