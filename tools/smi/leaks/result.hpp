// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/leaks/history.hpp"

#include <cstdint>
#include <vector>

namespace nimba::smi {

// What "leaks" found out.
struct LeaksResult {
    uint64_t snapshots = 0;  // that were taken, or tried
    std::vector<AdapterHistory> adapters;
    std::vector<Problem> problems;
};

}  // namespace nimba::smi
