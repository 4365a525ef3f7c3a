// SPDX-License-Identifier: MIT
#include "bench/page_tables/memory.hpp"

#include "bench/memory_program.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace nimba::bench {
namespace {

using ArraySizes = std::array<std::size_t, 4>;  // those arrays of a device that may be large

constexpr std::size_t kPageTableEntry = sizeof(vidmm_vm_pt);
constexpr std::size_t kSubTableEntry = sizeof(vidmm_vm_pte_elt3k);

// With the capacities of create_vector.
constexpr ArraySizes kReserved{1'000 * kPageTableEntry, 20'000 * kPageTableEntry,
                               20'000 * kSubTableEntry, 300'000 * kSubTableEntry};
constexpr std::size_t kReservedForRoots = 100 * kPageTableEntry + 100 * kSubTableEntry;

ArraySizes copied(const DumpSize& size)
{
    return {static_cast<std::size_t>(size.level1) * kPageTableEntry,
            static_cast<std::size_t>(size.level2) * kPageTableEntry, 0,
            static_cast<std::size_t>(size.sub_table) * kSubTableEntry};
}

std::int64_t large_blocks(const ArraySizes& sizes)
{
    return std::count_if(sizes.begin(), sizes.end(),
                         [](std::size_t size) { return size >= kLargeBlock; });
}

}  // namespace

CollectionMemory needed_memory(const DumpTree& tree)
{
    std::size_t peak = kReservedForRoots + tree.record_bytes();
    for (const std::size_t size : kReserved) {
        peak += size;
    }
    return {static_cast<std::int64_t>(peak),
            large_blocks(kReserved) + tree.devices() * large_blocks(copied(tree.size()))};
}

CollectionMemory measure_memory(const DumpTree& tree)
{
    const std::string text = run_memory_program("page-tables", tree.path());
    CollectionMemory memory{};
    if (std::sscanf(text.c_str(), "peak=%" SCNd64 "\nlarge_blocks=%" SCNd64 "\n", &memory.peak,
                    &memory.large_blocks) != 2) {
        throw std::runtime_error{"nimba-bench-memory told no memory"};
    }
    return memory;
}

}  // namespace nimba::bench
