// SPDX-License-Identifier: MIT
#pragma once

#include "driver/address_space.hpp"
#include "driver/page_table_text.hpp"

#include <cstdint>
#include <vector>

namespace nimba::sim {

// A dump has no more entries of mapped pages than these; what lies behind is not mapped.
inline constexpr uint64_t kMostMappedEntries = uint64_t{1} << 20U;

// Adds the page tables that map `runs`, which come in the order of their addresses: entries of
// 2 MiB where a run covers them, else a sub-table, of pages of 64 KiB if these do for all of it,
// else of 4 KiB.
void add_mapped_tables(const std::vector<PageRun>& runs, PageTableText& text,
                       uint64_t most_entries = kMostMappedEntries);

}  // namespace nimba::sim
