// SPDX-License-Identifier: MIT
// What workers read of an adapter's segments, clocks, sensors and counters, and how it travels to
// the tool. A figure that the driver or the kernel-interface library does not give has no value.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/adapter_reading.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

namespace nimba::smi {

// Where the figures of the segments come from.
enum class SegmentSource {
    kNode,         // the driver's node: in units of 1000 kB
    kHeaps,        // the driver's heaps, and the allocations in them: in MiB
    kAllocations,  // the allocations alone: in MiB, without sizes of segments
};

// The driver's heaps: the first segments.
inline constexpr std::array<std::string_view, 4> kHeapNames{"heap_invalid", "heap_local",
                                                            "heap_pcie_unsnoop", "heap_pcie_snoop"};

struct SegmentUse {
    std::optional<uint64_t> used;  // in the unit of the source
    std::optional<uint64_t> total;

    bool operator==(const SegmentUse&) const = default;
};

// Without the node the segments are 0 to 4, where 4 stands for all from there on.
struct SegmentReading : AdapterReading {
    SegmentSource source = SegmentSource::kAllocations;
    std::vector<SegmentUse> segments;

    bool operator==(const SegmentReading&) const = default;
};

// In the driver's units.
struct ClockReading : AdapterReading {
    std::optional<int64_t> engine;
    std::optional<int64_t> video;
    std::optional<int64_t> memory;
    std::optional<int64_t> core;
    std::optional<int64_t> gfx;          // of the DVFS settings
    std::optional<int64_t> gfx_voltage;  // of the DVFS settings
    std::optional<int64_t> level;        // one of DVFS_LEVEL_*

    bool operator==(const ClockReading&) const = default;
};

struct SensorReading : AdapterReading {
    std::optional<int64_t> temperature;  // degrees Celsius
    std::optional<int64_t> fan0;         // in the driver's units, as all fans
    std::optional<int64_t> fan1;
    std::optional<int64_t> fan_speed;

    bool operator==(const SensorReading&) const = default;
};

// Frames as the driver's nodes count them.
struct FrameCounts {
    std::optional<uint32_t> flips;
    std::optional<int64_t> time;  // of the last flip, nanoseconds
    std::optional<int64_t> blits;

    bool operator==(const FrameCounts&) const = default;
};

// Rates that the library computed, since the reading before and since the first.
struct FrameRates {
    std::optional<double> flips;
    std::optional<double> blits;
    std::optional<double> both;
    std::optional<double> average;

    bool operator==(const FrameRates&) const = default;
};

using Word = std::optional<uint32_t>;
using BandwidthWords = std::array<Word, std::size(BandwidthInfo{}.words)>;
using BusyWords = std::array<Word, std::size(GpuBusyInfo{}.words)>;

struct CounterReading : AdapterReading {
    FrameCounts frames;
    FrameRates rates;                  // when the nodes do not count flips
    std::optional<int64_t> engine_3d;  // per cent, as all engines
    std::optional<int64_t> engine_vcp;
    std::optional<int64_t> engine_vpp;
    BandwidthWords bandwidth{};
    BusyWords busy{};

    bool operator==(const CounterReading&) const = default;
};

}  // namespace nimba::smi
