// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>

namespace nimba::bench {

// Peaks of the allocator's live bytes over the level before the first call, in bytes.
struct PeakMemory {
    std::int64_t reader;    // get_current_allocation_data
    std::int64_t raw_list;  // get_allocation_raw_list, page 0, with the list of an earlier one kept
    std::int64_t leak_query;  // get_memleak_info, with the list of an earlier one kept
};

// Has nimba-bench-memory query the debug directory. Throws std::runtime_error.
PeakMemory measure_peak_memory(const std::filesystem::path& debug_directory);

}  // namespace nimba::bench
