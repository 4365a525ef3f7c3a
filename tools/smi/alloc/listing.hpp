// SPDX-License-Identifier: MIT
// The allocations that were asked for, in the order that was asked for: the model of "alloc".
#pragma once

#include "tools/smi/alloc/options.hpp"
#include "tools/smi/memory/snapshot.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace nimba::smi {

// One allocation of a snapshot, which must live as long.
struct ListedAllocation {
    const SlotIdentity* adapter = nullptr;
    const Allocation* allocation = nullptr;
    std::span<const Process> processes;  // that hold its device
};

struct AllocationCount {
    std::size_t allocations = 0;
    uint64_t bytes = 0;

    bool operator==(const AllocationCount&) const = default;
};

struct Listing {
    std::vector<ListedAllocation> rows;
    AllocationCount matched;  // what the filter lets through, also beyond the rows
    AllocationCount all;
};

// `top`: how many rows to keep. Allocations that are equal in the key come by slot, device and
// handle.
Listing list_allocations(const MemorySnapshot& snapshot, const AllocOptions& options,
                         const std::optional<std::size_t>& top);

}  // namespace nimba::smi
