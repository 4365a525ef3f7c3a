// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fault.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace nimba::sim {

// What befalls one opening of a node.
struct OpeningFaults {
    int open_error = 0;  // 0: it opens
    std::optional<std::string> garbage;
    std::optional<uint64_t> longest_read;
    std::optional<uint64_t> fails_behind;  // bytes of a file
    int read_error = 0;
    bool listing_fails = false;
    std::optional<uint64_t> entries;  // of a listing that fails; none: half of them
    int list_error = 0;
    std::chrono::milliseconds pause{0};  // of the first read
};

// Whether faults of that kind have an effect on openings of directories, or of files.
bool befalls_openings(FaultKind kind, bool directory);

// Adds the effect of a fault on an opening of the node, unless an earlier one has it.
void add_effect(const Fault& fault, const std::string& path, OpeningFaults& faults);

}  // namespace nimba::sim
