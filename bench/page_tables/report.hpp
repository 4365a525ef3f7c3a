// SPDX-License-Identifier: MIT
#pragma once

#include "bench/measurement.hpp"
#include "bench/page_tables/dump_tree.hpp"
#include "bench/page_tables/memory.hpp"
#include "bench/table.hpp"

#include <string>
#include <vector>

namespace nimba::bench {

// Every way to read one tree, from the samples of dump_cases. `devices` tells which it is.
std::vector<Row> dump_rows(const Samples& samples, const DumpTree& tree,
                           const std::string& devices);

// How parser and collection grow, from the samples of dump_growth_cases: `tree` has twice the lines
// of `half`.
std::vector<Row> dump_growth_rows(const Samples& samples, const DumpTree& half,
                                  const DumpTree& tree);

// From the samples of export_cases.
std::vector<Row> export_rows(const Samples& samples, const DumpTree& tree);

std::vector<Row> collection_memory_rows(const CollectionMemory& memory, const DumpTree& tree,
                                        const std::string& devices);

}  // namespace nimba::bench
