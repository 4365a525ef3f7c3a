// SPDX-License-Identifier: MIT
#include "tools/smi/export/metric.hpp"

#include <array>

namespace nimba::smi::exporting {
namespace {

using enum Metric;

constexpr std::array kMetrics{
    MetricRow{kAdapters, "nimba_adapters", "Nimba and QV adapters that discovery found."},
    MetricRow{kAdapterUp, "nimba_adapter_up",
              "Whether the adapter's driver gave any figure at this scrape."},
    MetricRow{kAdapterInfo, "nimba_adapter_info", "What the adapter is."},
    MetricRow{kSummary, "nimba_adapter_field_driver_units",
              "Fields of the adapter's summaries, in the driver's own units."},
    MetricRow{kClock, "nimba_clock_driver_units", "Clocks, in the driver's own unit."},
    MetricRow{kVoltage, "nimba_voltage_driver_units", "Voltages, in the driver's own unit."},
    MetricRow{kTemperature, "nimba_temperature_celsius", "Temperature of the adapter."},
    MetricRow{kFan, "nimba_fan_driver_units", "Fans, in the driver's own units."},
    MetricRow{kDvfsLevel, "nimba_dvfs_level", "Whether this is the level of the DVFS settings."},
    MetricRow{kDvfsSetting, "nimba_dvfs_setting",
              "Power and DVFS settings, in the driver's own units."},
    MetricRow{kMemoryUsed, "nimba_memory_used_bytes",
              "Video memory in use, of all segments together; of a heap modulo 4 GiB."},
    MetricRow{kMemoryTotal, "nimba_memory_total_bytes",
              "Video memory, of all segments together; of a heap modulo 4 GiB."},
    MetricRow{kSegmentUsed, "nimba_memory_segment_used_bytes",
              "Memory in use, by segment; of a heap modulo 4 GiB."},
    MetricRow{kSegmentTotal, "nimba_memory_segment_total_bytes",
              "Memory, by segment; of a heap modulo 4 GiB."},
    MetricRow{kAllocations, "nimba_allocations", "Allocations of video memory, by segment."},
    MetricRow{kAllocationBytes, "nimba_allocation_bytes",
              "Bytes of the allocations of video memory, by segment."},
    MetricRow{kDeviceContexts, "nimba_device_contexts",
              "Open device contexts, of which the library tells 50."},
    MetricRow{kProcessMemory, "nimba_process_memory_bytes",
              "Video memory of a device and the processes that hold it."},
    MetricRow{kProcessAllocations, "nimba_process_allocations",
              "Allocations of a device and the processes that hold it."},
    MetricRow{kLeakAllocations, "nimba_leak_group_allocations",
              "Allocations of one shape, for the 15 shapes with the most."},
    MetricRow{kLeakBytes, "nimba_leak_group_bytes", "Bytes of the allocations of one shape."},
    MetricRow{kLeakOldest, "nimba_leak_group_oldest_scrapes",
              "Scrapes in a row that have seen the oldest allocation of one shape."},
    MetricRow{kAddressSpaces, "nimba_page_table_address_spaces",
              "GPU address spaces of processes."},
    MetricRow{kPageTableEntries, "nimba_page_table_entries",
              "Entries of the GPU page tables of a process."},
    MetricRow{kPageTableAllocations, "nimba_page_table_allocations",
              "Allocations in the GPU address spaces of processes."},
    MetricRow{kFrames, "nimba_frames_total", "Frames that were shown, by flip and by blit.", true},
    MetricRow{kFrameRate, "nimba_frame_rate_hertz", "Frames per second since the scrape before."},
    MetricRow{kAverageFrameRate, "nimba_frame_rate_average_hertz",
              "Frames per second since the first scrape."},
    MetricRow{kEngineBusy, "nimba_engine_busy_ratio", "How busy an engine is, from 0 to 1."},
    MetricRow{kBandwidthWord, "nimba_bandwidth_word",
              "Words of the kernel-interface library about bandwidth."},
    MetricRow{kBusyWord, "nimba_busy_word",
              "Words of the kernel-interface library about engine use."},
    MetricRow{kLibraryInfo, "nimba_library_info", "The management library and its interface."},
    MetricRow{kExporterInfo, "nimba_exporter_info", "The version of this exporter."},
    MetricRow{kCollectorSuccess, "nimba_collector_success",
              "Whether a collector got all that there is to read."},
    MetricRow{kCollectorDuration, "nimba_collector_duration_seconds", "How long a collector took."},
    MetricRow{kWorkersReplaced, "nimba_workers_replaced_total",
              "Worker processes that could not go on and were replaced.", true},
    MetricRow{kScrapeDuration, "nimba_scrape_duration_seconds", "How long this scrape took."},
};

constexpr bool is_in_order()
{
    for (std::size_t i = 0; i < kMetrics.size(); ++i) {
        if (static_cast<std::size_t>(kMetrics.at(i).metric) != i) {
            return false;
        }
    }
    return true;
}
static_assert(is_in_order());

}  // namespace

std::span<const MetricRow> metric_table()
{
    return kMetrics;
}

}  // namespace nimba::smi::exporting
