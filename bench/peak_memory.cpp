// SPDX-License-Identifier: MIT
#include "bench/peak_memory.hpp"

#include "bench/memory_program.hpp"

#include <cinttypes>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace nimba::bench {

PeakMemory measure_peak_memory(const std::filesystem::path& debug_directory)
{
    const std::string text = run_memory_program("allocations", debug_directory);
    PeakMemory peak{};
    const int values = std::sscanf(
        text.c_str(), "reader=%" SCNd64 "\nraw_list=%" SCNd64 "\nleak_query=%" SCNd64 "\n",
        &peak.reader, &peak.raw_list, &peak.leak_query);
    if (values != 3) {
        throw std::runtime_error{"nimba-bench-memory told no memory"};
    }
    return peak;
}

}  // namespace nimba::bench
