// SPDX-License-Identifier: MIT
#pragma once

#include "allocation_source_reader.hpp"
#include "toml_table.hpp"
#include "video_memory.hpp"

#include <vector>

namespace nimba::sim {

// Reads the [[adapter.allocation]] tables of an adapter whose driver has these names for them.
std::vector<Allocation> read_allocations(const TableReader& adapter, const AllocationParts& parts,
                                         AllocationNames names);

}  // namespace nimba::sim
