// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace nimba::bench {

struct BareCount {
    int nodes = 0;
    std::int64_t bytes = 0;
};

// Opens and reads every node of <debug directory>/allocations to its end and makes nothing of it:
// what no reader can do without. Throws std::system_error.
BareCount read_bare(const std::string& debug_directory);

}  // namespace nimba::bench
