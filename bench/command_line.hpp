// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace nimba::bench {

struct Options {
    std::vector<int> sizes{1'000, 10'000, 100'000};  // allocations of the trees, ascending
    int lines = 300'000;                             // sub-table lines of the largest device
    int repetitions = 15;
    std::string directory = "/dev/shm";  // where the trees are made; its path must be short
    bool help = false;
};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

extern const char kUsage[];

// Throws UsageError.
Options parse_command_line(int argc, char** argv);

}  // namespace nimba::bench
