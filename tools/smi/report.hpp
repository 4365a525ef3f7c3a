// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"

#include <string>
#include <vector>

namespace nimba::smi {

// What a command leaves to print: its result for standard output and a line of standard error for
// each problem.
struct Report {
    std::string output;
    std::vector<Problem> problems;
    std::vector<Problem> told{};  // were printed when they came up; they count for the exit status
};

}  // namespace nimba::smi
