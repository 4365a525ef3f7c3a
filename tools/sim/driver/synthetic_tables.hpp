// SPDX-License-Identifier: MIT
#pragma once

#include "driver/page_table_text.hpp"
#include "video_memory.hpp"

#include <cstdint>

namespace nimba::sim {

inline constexpr uint64_t kTablesPerTable = 512;

// The tables lie from 0x400000000000 on.
inline constexpr uint64_t kFirstSyntheticLevel0 = 128;
inline constexpr uint64_t kMostSyntheticLevel0 = kTablesPerTable - kFirstSyntheticLevel0;

// So many entries fit in the sub-tables, each of which has as many as the others of its page size.
uint64_t most_entries(const SyntheticTables& tables);

// Adds the tables with their entries; all that is told by percent is spread evenly.
void add_synthetic_tables(const SyntheticTables& tables, PageTableText& text);

}  // namespace nimba::sim
