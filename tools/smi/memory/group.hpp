// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/memory/reading.hpp"

#include <span>
#include <vector>

namespace nimba::smi {

// The groups of like allocations of one snapshot, ordered by shape; owners by device.
std::vector<LeakGroup> group_by_shape(std::span<const Allocation> allocations);

}  // namespace nimba::smi
