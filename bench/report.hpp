// SPDX-License-Identifier: MIT
#pragma once

#include "bench/measurement.hpp"
#include "bench/peak_memory.hpp"
#include "bench/table.hpp"

#include <array>
#include <string>
#include <vector>

namespace nimba::bench {

// Every query over one tree of `size` allocations, from the samples of query_cases.
std::vector<Row> query_rows(const Samples& samples, int size);

// Three trees, each twice as large as the one before.
using Sizes = std::array<int, 3>;

// How the leak detector grows, from the samples of leak_cases. `condition` tells what becomes of
// the allocations from snapshot to snapshot.
std::vector<Row> growth_rows(const Samples& samples, const Sizes& sizes,
                             const std::string& condition);

std::vector<Row> memory_rows(const PeakMemory& peak, int size);

// One sentence: how many limits there are, and how many are met.
std::string verdict(const std::vector<Row>& rows);

}  // namespace nimba::bench
