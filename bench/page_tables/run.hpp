// SPDX-License-Identifier: MIT
#pragma once

#include "bench/table.hpp"

#include <filesystem>
#include <vector>

namespace nimba::bench {

// Measures what reading and copying out page tables costs, with trees made in `scratch`: of one
// device with `sub_table_lines` such lines, of one with half of them, and of 50 with a tenth each.
// What this process allocates in blocks of 128 KiB and more is from then on fresh from the system.
// Throws std::runtime_error and std::system_error.
std::vector<Row> measure_page_tables(const std::filesystem::path& scratch, int sub_table_lines,
                                     int repetitions);

}  // namespace nimba::bench
