// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"

#include <set>

namespace nimba::sim {

// The processes that the devices' texts name in any of the samples: at least all of which the
// library looks for a name.
std::set<int> named_processes(const archive::Capture& capture);

}  // namespace nimba::sim
