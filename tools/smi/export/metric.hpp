// SPDX-License-Identifier: MIT
// The metrics: the table that series, documents and the manual page agree with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace nimba::smi::exporting {

enum class Metric : uint8_t {
    kAdapters,
    kAdapterUp,
    kAdapterInfo,
    kSummary,
    kClock,
    kVoltage,
    kTemperature,
    kFan,
    kDvfsLevel,
    kDvfsSetting,
    kMemoryUsed,
    kMemoryTotal,
    kSegmentUsed,
    kSegmentTotal,
    kAllocations,
    kAllocationBytes,
    kDeviceContexts,
    kProcessMemory,
    kProcessAllocations,
    kLeakAllocations,
    kLeakBytes,
    kLeakOldest,
    kAddressSpaces,
    kPageTableEntries,
    kPageTableAllocations,
    kFrames,
    kFrameRate,
    kAverageFrameRate,
    kEngineBusy,
    kBandwidthWord,
    kBusyWord,
    kLibraryInfo,
    kExporterInfo,
    kCollectorSuccess,
    kCollectorDuration,
    kWorkersReplaced,
    kScrapeDuration,
};

struct MetricRow {
    Metric metric;
    const char* name;
    const char* help;
    bool is_counter = false;  // else a gauge
};

// By Metric, in the order in which they are shown.
std::span<const MetricRow> metric_table();

}  // namespace nimba::smi::exporting
