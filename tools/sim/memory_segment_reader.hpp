// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"
#include "toml_table.hpp"

#include <vector>

namespace nimba::sim {

// Reads the [[adapter.segment]] tables, or what there is without any mention of them. On a QV chip
// the segments are heaps.
std::vector<MemorySegment> read_memory_segments(const TableReader& adapter, bool is_qv);

}  // namespace nimba::sim
