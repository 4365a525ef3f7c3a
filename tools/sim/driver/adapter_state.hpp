// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"
#include "driver/activity.hpp"
#include "driver/cooling.hpp"
#include "driver/dvfs.hpp"
#include "driver/memory_segments.hpp"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace nimba::sim {

struct Adapter;

// The words of a usage that are an engine's.
inline constexpr std::size_t kUsage3d = 2;
inline constexpr std::size_t kUsageVpp = 3;
inline constexpr std::size_t kUsageVcp = 4;

// Everything that an adapter's nodes tell of.
struct AdapterState {
    explicit AdapterState(const Adapter& adapter);

    // Makes the time since the machine began go by.
    void advance_to(std::chrono::nanoseconds time);

    // The words of Counters::usage; zeros while nobody has switched the accounting on.
    std::array<uint32_t, kUsageWords> usage() const;

    // The segment with the adapter's own memory; one of no bytes if there is none.
    MemorySegment frame_buffer() const;

    uint16_t device;
    bool is_qv;
    std::string driver_dir;  // "jw" or "qv"
    AdapterBoard board;
    Dvfs dvfs;
    Activity activity;
    Cooling cooling;
    MemorySegments segments;
    int32_t misc_ctl_flag = 0;
    bool enable_perf = false;
    bool enable_usage = false;
};

}  // namespace nimba::sim
