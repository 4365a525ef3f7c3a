// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace nimba::smi {

struct LeaksOptions {
    std::chrono::milliseconds interval{1000};  // from one snapshot to the next
    std::optional<uint64_t> count;             // snapshots; without it, until interrupted
    std::optional<uint64_t> fail_on_growth;    // allocations of one group
};

}  // namespace nimba::smi
