// SPDX-License-Identifier: MIT
#pragma once

#include "bench/page_tables/dump_tree.hpp"

#include <cstddef>
#include <cstdint>

namespace nimba::bench {

// Blocks of this many bytes and more are large.
inline constexpr std::size_t kLargeBlock = std::size_t{1} << 20U;

// What the allocator gives one collection of all devices.
struct CollectionMemory {
    std::int64_t peak;          // live bytes at their highest, over the level before
    std::int64_t large_blocks;  // how many it gave
};

// What a collection cannot do without: the records of all devices, and one working record with the
// capacities that the interface names, whose arrays are allocated once.
CollectionMemory needed_memory(const DumpTree& tree);

// Has nimba-bench-memory collect the tree. Throws std::runtime_error.
CollectionMemory measure_memory(const DumpTree& tree);

}  // namespace nimba::bench
