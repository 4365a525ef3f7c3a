// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/memory/reading.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace nimba::smi::exporting {

// The allocations of one shape.
struct LeakGroupSize {
    Shape shape;
    uint64_t allocations = 0;
    int32_t oldest_hits = 0;

    [[nodiscard]] uint64_t bytes() const { return allocations * shape.size; }

    bool operator==(const LeakGroupSize&) const = default;
};

// As many groups as a report of the library has, those with the most allocations first, then those
// with the most bytes.
std::vector<LeakGroupSize> largest_leak_groups(std::span<const LeakGroup> groups);

}  // namespace nimba::smi::exporting
