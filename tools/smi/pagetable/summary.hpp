// SPDX-License-Identifier: MIT
// The sums of an address space, and their table.
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// Segments as they are told apart.
inline constexpr std::array kMappedSegments{"0", "1", "2", "3", "4+"};

struct SpaceSums {
    LevelCounts tables{};  // entries, also those that make no sense
    LevelCounts pages{};
    std::map<uint64_t, uint64_t> by_page_size;                  // mapped bytes
    std::array<uint64_t, kMappedSegments.size()> by_segment{};  // likewise
    uint64_t mapped = 0;

    void add(const SpaceSums& other);

    bool operator==(const SpaceSums&) const = default;
};

SpaceSums sums_of(const VmDevice& device, const AddressSpace& space);

struct ProcessSums {
    VmDevice device;
    SpaceSums sums;
};

// A row for each process and one for all. Page sizes and segments that map nothing have no column.
std::string summary_text(std::span<const ProcessSums> processes);

}  // namespace nimba::smi
