// SPDX-License-Identifier: MIT
// The video memory of the adapters at one time: the model of "ps" and "alloc".
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/memory/allocation.hpp"
#include "tools/smi/memory/owners.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/worker/payload.hpp"

#include <vector>

namespace nimba::smi {

struct AdapterMemory {
    SlotIdentity adapter;
    std::vector<Allocation> allocations;
    Owners owners;
};

struct MemorySnapshot {
    std::vector<AdapterMemory> adapters;  // those that could be read, in slot order
    std::vector<Problem> problems;
};

// Asks the adapters that the options choose, all at the same time.
MemorySnapshot take_memory_snapshot(const Options& options);

}  // namespace nimba::smi
