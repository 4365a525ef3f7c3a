// SPDX-License-Identifier: MIT
// Who uses how much video memory: the model of "ps".
#pragma once

#include "tools/smi/memory/snapshot.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nimba::smi {

// Segments as they are told apart; the last stands for allocations in none, whose segment is
// negative.
inline constexpr std::array kSegmentNames{"0", "1", "2", "3", "4+", "none"};
using SegmentBytes = std::array<uint64_t, kSegmentNames.size()>;

struct Usage {
    std::size_t allocations = 0;
    SegmentBytes segments{};
    uint64_t bytes = 0;  // in all segments

    void add(const Allocation& allocation);
    void add(const Usage& other);

    bool operator==(const Usage&) const = default;
};

// One device of an adapter, with or without a context.
struct DeviceUsage {
    int slot = 0;
    std::string bus_id;
    uint32_t device = 0;
    std::vector<Process> processes;  // of its contexts; none when they are not known
    Usage usage;

    bool operator==(const DeviceUsage&) const = default;
};

struct UsageTable {
    std::vector<DeviceUsage> devices;  // largest first
    Usage total;                       // of all devices, also of those that were left out
};

// `top`: how many devices to keep.
UsageTable usage_table(const MemorySnapshot& snapshot, const std::optional<std::size_t>& top);

}  // namespace nimba::smi
