// SPDX-License-Identifier: MIT
#include "smi/export_figures.hpp"
#include "smi/memory_records.hpp"
#include "tools/smi/export/faces.hpp"
#include "tools/smi/export/keep_reading.hpp"
#include "tools/smi/export/machine_samples.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi::exporting {
namespace {

// The lines of the text that begin so, without comments.
std::vector<std::string> lines_of(const AdapterFigures& adapter, std::string_view begin,
                                  const ProcessCap& cap = {})
{
    const std::string text = exposition_text(samples_of(machine_with(adapter), cap));
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        if (text.compare(at, begin.size(), begin) == 0) {
            lines.push_back(text.substr(at, end - at));
        }
        at = end + 1;
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(ExportSamples, MachineWithoutAdaptersHasItsOwnSeriesAlone)
{
    MachineFigures machine;
    machine.tool_version = "1.2.3";
    machine.library = LibraryVersion{"/usr/lib/libnimba_mgmt_interface.so.0.9", "0.9", 21, 21,
                                     NIMBA_VERSION_MATCH};
    machine.adapters_found = 0;
    machine.runs = {{"library", true, Seconds{0.5}}, {"discovery", false, Seconds{2}}};
    machine.duration = Seconds{2.5};
    EXPECT_EQ(exposition_text(samples_of(machine, {})),
              R"(# HELP nimba_adapters Nimba and QV adapters that discovery found.
# TYPE nimba_adapters gauge
nimba_adapters 0
# HELP nimba_library_info The management library and its interface.
# TYPE nimba_library_info gauge
nimba_library_info{path="/usr/lib/libnimba_mgmt_interface.so.0.9",version="0.9",interface_version="21",client_version="21",match="match"} 1
# HELP nimba_exporter_info The version of this exporter.
# TYPE nimba_exporter_info gauge
nimba_exporter_info{version="1.2.3"} 1
# HELP nimba_collector_success Whether a collector got all that there is to read.
# TYPE nimba_collector_success gauge
nimba_collector_success{collector="library"} 1
nimba_collector_success{collector="discovery"} 0
# HELP nimba_collector_duration_seconds How long a collector took.
# TYPE nimba_collector_duration_seconds gauge
nimba_collector_duration_seconds{collector="library"} 0.5
nimba_collector_duration_seconds{collector="discovery"} 2
# HELP nimba_workers_replaced_total Worker processes that could not go on and were replaced.
# TYPE nimba_workers_replaced_total counter
nimba_workers_replaced_total 0
# HELP nimba_scrape_duration_seconds How long this scrape took.
# TYPE nimba_scrape_duration_seconds gauge
nimba_scrape_duration_seconds 2.5
)");
}

TEST(ExportSamples, AdapterThatToldNothingIsDownAndHasNoZeros)
{
    AdapterFigures adapter = silent_adapter();
    adapter.runs = {{"summary", true, Seconds{0.125}}, {"clocks", false, std::nullopt}};
    adapter.workers_replaced = 2;
    MachineFigures machine = machine_with(adapter);
    machine.workers_replaced = 3;
    EXPECT_EQ(
        exposition_text(samples_of(machine, {})),
        R"(# HELP nimba_adapter_up Whether the adapter's driver gave any figure at this scrape.
# TYPE nimba_adapter_up gauge
nimba_adapter_up{gpu="0000:02:00.0",slot="1"} 0
# HELP nimba_adapter_info What the adapter is.
# TYPE nimba_adapter_info gauge
nimba_adapter_info{gpu="0000:02:00.0",slot="1"} 1
# HELP nimba_exporter_info The version of this exporter.
# TYPE nimba_exporter_info gauge
nimba_exporter_info{version="1.2.3"} 1
# HELP nimba_collector_success Whether a collector got all that there is to read.
# TYPE nimba_collector_success gauge
nimba_collector_success{collector="summary",gpu="0000:02:00.0",slot="1"} 1
nimba_collector_success{collector="clocks",gpu="0000:02:00.0",slot="1"} 0
# HELP nimba_collector_duration_seconds How long a collector took.
# TYPE nimba_collector_duration_seconds gauge
nimba_collector_duration_seconds{collector="summary",gpu="0000:02:00.0",slot="1"} 0.125
# HELP nimba_workers_replaced_total Worker processes that could not go on and were replaced.
# TYPE nimba_workers_replaced_total counter
nimba_workers_replaced_total 3
nimba_workers_replaced_total{gpu="0000:02:00.0",slot="1"} 2
# HELP nimba_scrape_duration_seconds How long this scrape took.
# TYPE nimba_scrape_duration_seconds gauge
nimba_scrape_duration_seconds 0.25
)");
}

TEST(ExportSamples, IdentityIsInTheLabelsOfOneSeries)
{
    AdapterFigures adapter;
    adapter.state = busy_adapter();
    EXPECT_EQ(
        lines_of(adapter, "nimba_adapter_info"),
        (Lines{R"(nimba_adapter_info{gpu="0000:01:00.0",slot="0",name="Gpu0:Nimba-K6",)"
               R"(card="1",vendor_id="0x4e4d",device_id="0x1006",driver_kind="va",)"
               R"(driver_version="1.2.a",firmware_version="8.f.0.1c",)"
               R"(firmware_name="K6 desktop board",pcie_generation="4",pcie_lanes="16"} 1)"}));
}

TEST(ExportSamples, ClocksAndSummariesAreInTheDriversUnits)
{
    AdapterFigures adapter;
    adapter.state = busy_adapter();
    adapter.state.clocks.video.reset();
    EXPECT_EQ(lines_of(adapter, "nimba_clock"),
              (Lines{R"(nimba_clock_driver_units{gpu="0000:01:00.0",slot="0",clock="engine"} 550)",
                     R"(nimba_clock_driver_units{gpu="0000:01:00.0",slot="0",clock="memory"} 1000)",
                     R"(nimba_clock_driver_units{gpu="0000:01:00.0",slot="0",clock="core"} 600)",
                     R"(nimba_clock_driver_units{gpu="0000:01:00.0",slot="0",clock="gfx"} 550)"}));
    EXPECT_EQ(lines_of(adapter, "nimba_voltage"),
              (Lines{R"(nimba_voltage_driver_units{gpu="0000:01:00.0",slot="0",rail="gfx"} 800)"}));
    const Lines summary = lines_of(adapter, "nimba_adapter_field");
    const auto has = [&](const char* line) {
        return std::ranges::find(summary, line) != summary.end();
    };
    EXPECT_TRUE(has(R"(nimba_adapter_field_driver_units{gpu="0000:01:00.0",slot="0",)"
                    R"(field="frame_buffer_size"} 8192)"));
    EXPECT_TRUE(has(R"(nimba_adapter_field_driver_units{gpu="0000:01:00.0",slot="0",)"
                    R"(field="power_case"} 5)"));
    EXPECT_FALSE(has(R"(nimba_adapter_field_driver_units{gpu="0000:01:00.0",slot="0",)"
                     R"(field="engine_clock"} 550)"));
    EXPECT_EQ(summary.size(), 20U);
}

TEST(ExportSamples, OneLevelIsSetAndTheOthersAreNot)
{
    AdapterFigures adapter;
    adapter.state = busy_adapter();
    adapter.state.clocks.level = DVFS_LEVEL_PERFORMANCE;
    EXPECT_EQ(lines_of(adapter, "nimba_dvfs"),
              (Lines{R"(nimba_dvfs_level{gpu="0000:01:00.0",slot="0",level="balance"} 0)",
                     R"(nimba_dvfs_level{gpu="0000:01:00.0",slot="0",level="lowpower"} 0)",
                     R"(nimba_dvfs_level{gpu="0000:01:00.0",slot="0",level="performance"} 1)"}));
    adapter.state.clocks.level.reset();
    EXPECT_EQ(lines_of(adapter, "nimba_dvfs"), Lines{});
}

TEST(ExportSamples, SettingsAreThoseThatNoOtherSeriesHas)
{
    AdapterFigures adapter = silent_adapter();
    adapter.settings.emplace().values.assign(dvfs_fields().size(), 7);
    adapter.settings->values[1].reset();
    const Lines settings = lines_of(adapter, "nimba_dvfs_setting");
    ASSERT_EQ(settings.size(), 19U);
    EXPECT_EQ(settings[0],
              R"(nimba_dvfs_setting{gpu="0000:02:00.0",slot="1",setting="power_mode"} 7)");
    EXPECT_EQ(settings[1],
              R"(nimba_dvfs_setting{gpu="0000:02:00.0",slot="1",setting="power_gating_vcp"} 7)");
    EXPECT_EQ(lines_of(adapter, "nimba_adapter_up"),
              (Lines{R"(nimba_adapter_up{gpu="0000:02:00.0",slot="1"} 1)"}));
}

TEST(ExportSamples, TemperatureIsHwmonsOrElseTheSummarys)
{
    AdapterFigures adapter;
    adapter.state = busy_adapter();
    EXPECT_EQ(lines_of(adapter, "nimba_temperature"),
              (Lines{R"(nimba_temperature_celsius{gpu="0000:01:00.0",slot="0"} 72)"}));
    adapter.state.sensors.temperature.reset();
    EXPECT_EQ(lines_of(adapter, "nimba_temperature"),
              (Lines{R"(nimba_temperature_celsius{gpu="0000:01:00.0",slot="0"} 71)"}));
    adapter.state.summary.temperature.reset();
    EXPECT_EQ(lines_of(adapter, "nimba_temperature"), Lines{});
    EXPECT_EQ(lines_of(adapter, "nimba_fan"),
              (Lines{R"(nimba_fan_driver_units{gpu="0000:01:00.0",slot="0",fan="fan0"} 1600)",
                     R"(nimba_fan_driver_units{gpu="0000:01:00.0",slot="0",fan="fan1"} 1650)"}));
}

TEST(ExportSamples, SegmentsAreInBytesAndAnUnknownOneMakesTheSumSo)
{
    AdapterFigures adapter = silent_adapter();
    keep_reading(adapter,
                 SegmentReading{{}, SegmentSource::kNode, {{272, 4294}, {33, std::nullopt}}});
    EXPECT_EQ(
        lines_of(adapter, "nimba_memory"),
        (Lines{
            R"(nimba_memory_used_bytes{gpu="0000:02:00.0",slot="1"} 305000000)",
            R"(nimba_memory_segment_used_bytes{gpu="0000:02:00.0",slot="1",segment="0"} 272000000)",
            R"(nimba_memory_segment_used_bytes{gpu="0000:02:00.0",slot="1",segment="1"} 33000000)",
            R"(nimba_memory_segment_total_bytes{gpu="0000:02:00.0",slot="1",segment="0"} 4294000000)"}));
}

TEST(ExportSamples, HeapsNameTheirSegmentsAndCountInMebibytes)
{
    AdapterFigures adapter = silent_adapter();
    keep_reading(
        adapter,
        SegmentReading{{}, SegmentSource::kHeaps, {{0, 0}, {3, 2048}, {}, {}, {0, std::nullopt}}});
    EXPECT_EQ(lines_of(adapter, "nimba_memory_segment_used"),
              (Lines{R"(nimba_memory_segment_used_bytes{gpu="0000:02:00.0",slot="1",segment="0",)"
                     R"(heap="heap_invalid"} 0)",
                     R"(nimba_memory_segment_used_bytes{gpu="0000:02:00.0",slot="1",segment="1",)"
                     R"(heap="heap_local"} 3145728)"}));
}

TEST(ExportSamples, AllocationsCountBySegment)
{
    AdapterFigures adapter = silent_adapter();
    keep_reading(adapter, MemoryReading{{{}, {{0x11, 4100001, "maze"}, {0x12, 4100002, ""}}},
                                        {allocation(1, 0x11, 4096, 0), allocation(2, 0x11, 100, 0),
                                         allocation(3, 0x12, 7, 9), allocation(4, 0x13, 1, -1)}});
    EXPECT_EQ(lines_of(adapter, "nimba_allocations"),
              (Lines{R"(nimba_allocations{gpu="0000:02:00.0",slot="1",segment="0"} 2)",
                     R"(nimba_allocations{gpu="0000:02:00.0",slot="1",segment="1"} 0)",
                     R"(nimba_allocations{gpu="0000:02:00.0",slot="1",segment="2"} 0)",
                     R"(nimba_allocations{gpu="0000:02:00.0",slot="1",segment="3"} 0)",
                     R"(nimba_allocations{gpu="0000:02:00.0",slot="1",segment="4+"} 1)",
                     R"(nimba_allocations{gpu="0000:02:00.0",slot="1",segment="none"} 1)"}));
    EXPECT_EQ(lines_of(adapter, "nimba_allocation_bytes")[0],
              R"(nimba_allocation_bytes{gpu="0000:02:00.0",slot="1",segment="0"} 4196)");
    EXPECT_EQ(lines_of(adapter, "nimba_device_contexts"),
              (Lines{R"(nimba_device_contexts{gpu="0000:02:00.0",slot="1"} 2)"}));
    EXPECT_EQ(
        lines_of(adapter, "nimba_process_memory"),
        (Lines{R"(nimba_process_memory_bytes{gpu="0000:02:00.0",slot="1",pid="4100001",)"
               R"(process="maze",device="0x11"} 4196)",
               R"(nimba_process_memory_bytes{gpu="0000:02:00.0",slot="1",pid="4100002",)"
               R"(device="0x12"} 7)",
               R"(nimba_process_memory_bytes{gpu="0000:02:00.0",slot="1",device="0x13"} 1)"}));
}

TEST(ExportSamples, ContextsAreAbsentWhenTheirMapWasNotReadAndThereWhenItWasFull)
{
    const auto with_remark = [](const Failure& remark) {
        AdapterFigures adapter = silent_adapter();
        MemoryReading reading;
        reading.contexts = {{0x11, 4100001, "maze"}};
        reading.allocations = {allocation(1, 0x11, 4096, 0)};
        reading.remarks = {remark};
        keep_reading(adapter, std::move(reading));
        return adapter;
    };
    const auto unread = with_remark({ExitStatus::kNoAdapter, "get_device_pid_maps", "EIO"});
    EXPECT_EQ(lines_of(unread, "nimba_device_contexts"), Lines{});
    EXPECT_EQ(lines_of(unread, "nimba_allocation_bytes").size(), 6U);
    const Lines one{R"(nimba_device_contexts{gpu="0000:02:00.0",slot="1"} 1)"};
    EXPECT_EQ(lines_of(with_remark({ExitStatus::kOk, "get_device_pid_maps", "more"}),
                       "nimba_device_contexts"),
              one);
    EXPECT_EQ(
        lines_of(with_remark({ExitStatus::kNoAdapter, "fps_init", "EIO"}), "nimba_device_contexts"),
        one);
}

TEST(ExportSamples, CountersAndRatiosHaveTheirUnits)
{
    AdapterFigures adapter;
    adapter.state = busy_adapter();
    adapter.state.counters.frames = {700, 50'000'000, 900};
    adapter.state.rates = {60, std::nullopt, 61.5, 30};
    adapter.state.counters.bandwidth[3] = 812;
    adapter.state.counters.busy[2] = 5;
    EXPECT_EQ(lines_of(adapter, "nimba_frame"),
              (Lines{R"(nimba_frames_total{gpu="0000:01:00.0",slot="0",kind="flip"} 700)",
                     R"(nimba_frames_total{gpu="0000:01:00.0",slot="0",kind="blit"} 900)",
                     R"(nimba_frame_rate_hertz{gpu="0000:01:00.0",slot="0",kind="flip"} 60)",
                     R"(nimba_frame_rate_hertz{gpu="0000:01:00.0",slot="0",kind="all"} 61.5)",
                     R"(nimba_frame_rate_average_hertz{gpu="0000:01:00.0",slot="0"} 30)"}));
    EXPECT_EQ(lines_of(adapter, "nimba_engine"),
              (Lines{R"(nimba_engine_busy_ratio{gpu="0000:01:00.0",slot="0",engine="3d"} 0.95)",
                     R"(nimba_engine_busy_ratio{gpu="0000:01:00.0",slot="0",engine="vcp"} 0.3)",
                     R"(nimba_engine_busy_ratio{gpu="0000:01:00.0",slot="0",engine="vpp"} 0)"}));
    EXPECT_EQ(lines_of(adapter, "nimba_bandwidth"),
              (Lines{R"(nimba_bandwidth_word{gpu="0000:01:00.0",slot="0",word="3"} 812)"}));
    EXPECT_EQ(lines_of(adapter, "nimba_busy"),
              (Lines{R"(nimba_busy_word{gpu="0000:01:00.0",slot="0",word="2"} 5)"}));
}

TEST(ExportSamples, LeakGroupsAreThe15WithTheMostAllocations)
{
    AdapterFigures adapter = silent_adapter();
    LeakReading reading;
    for (int32_t width = 1; width <= 20; ++width) {
        reading.groups.push_back(
            leak_group({width, 8, 100, 28, 1}, static_cast<uint64_t>(width), width * 10));
    }
    reading.groups.push_back(leak_group({99, 9, 4096, -1, 5}, 20, 3));
    keep_reading(adapter, std::move(reading));
    const Lines groups = lines_of(adapter, "nimba_leak_group_allocations");
    ASSERT_EQ(groups.size(), 15U);
    EXPECT_EQ(groups[0], R"(nimba_leak_group_allocations{gpu="0000:02:00.0",slot="1",width="99",)"
                         R"(height="9",size="4096",format="-1",type="5"} 20)");
    EXPECT_EQ(groups[1], R"(nimba_leak_group_allocations{gpu="0000:02:00.0",slot="1",width="20",)"
                         R"(height="8",size="100",format="28",type="1"} 20)");
    EXPECT_EQ(groups[14], R"(nimba_leak_group_allocations{gpu="0000:02:00.0",slot="1",width="7",)"
                          R"(height="8",size="100",format="28",type="1"} 7)");
    EXPECT_EQ(lines_of(adapter, "nimba_leak_group_bytes")[1],
              R"(nimba_leak_group_bytes{gpu="0000:02:00.0",slot="1",width="20",)"
              R"(height="8",size="100",format="28",type="1"} 2000)");
    EXPECT_EQ(lines_of(adapter, "nimba_leak_group_oldest")[1],
              R"(nimba_leak_group_oldest_scrapes{gpu="0000:02:00.0",slot="1",width="20",)"
              R"(height="8",size="100",format="28",type="1"} 200)");
}

TEST(ExportSamples, EveryAdapterThatToldOneThingIsUp)
{
    const Lines up{R"(nimba_adapter_up{gpu="0000:02:00.0",slot="1"} 1)"};
    AdapterFigures leaks = silent_adapter();
    keep_reading(leaks, LeakReading{});
    EXPECT_EQ(lines_of(leaks, "nimba_adapter_up"), up);
    AdapterFigures sensors = silent_adapter();
    sensors.state.sensors.fan1 = 0;
    EXPECT_EQ(lines_of(sensors, "nimba_adapter_up"), up);
    AdapterFigures summary = silent_adapter();
    summary.state.summary.temperature = 0;
    EXPECT_EQ(lines_of(summary, "nimba_adapter_up"), up);
    // What the library still knows of a driver that has gone.
    AdapterFigures kept = silent_adapter();
    kept.state.summary.firmware_name = "K6";
    kept.state.summary.frame_buffer_size = 8192;
    EXPECT_EQ(lines_of(kept, "nimba_adapter_up"),
              (Lines{R"(nimba_adapter_up{gpu="0000:02:00.0",slot="1"} 0)"}));
}

}  // namespace
}  // namespace nimba::smi::exporting
