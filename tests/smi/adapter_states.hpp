// SPDX-License-Identifier: MIT
// Snapshots for the tests of the commands that show whole adapters.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"

#include <chrono>
#include <cstdint>

namespace nimba::smi {

// 2026-11-21 18:02:59.007 UTC
inline constexpr std::chrono::system_clock::time_point kSnapshotTime{
    std::chrono::milliseconds{1'795'284'179'007}};

inline DeviceUsage device_usage(int slot, uint32_t device, std::vector<Process> processes,
                                uint64_t bytes)
{
    DeviceUsage usage;
    usage.slot = slot;
    usage.bus_id = slot == 0 ? "0000:01:00.0" : "0000:02:00.0";
    usage.device = device;
    usage.processes = std::move(processes);
    usage.usage.allocations = 3;
    usage.usage.segments.front() = bytes;
    usage.usage.bytes = bytes;
    return usage;
}

// A Nimba adapter of which everything is known.
inline AdapterState busy_adapter()
{
    AdapterState state;
    state.adapter = {0, "0000:01:00.0", "Gpu0:Nimba-K6"};
    state.there = true;

    SummaryReading& summary = state.summary;
    summary.adapter = Adapter{0,      "Gpu0:Nimba-K6", "0000:01:00.0",  1,
                              0x4E4D, 0x1006,          DriverKind::kVa, {0, 0x10000}};
    summary.frame_buffer_size = 8192;
    summary.memory_data_rate = 2000;
    summary.display_ports = 3;
    summary.display_types = 4 | 8;
    summary.memory_channels = 4;
    summary.link_width = 16;
    summary.driver_version = 0x1'0002'000A;
    summary.firmware_version = 0x0008'000F'0000'001C;
    summary.firmware_name = "K6 desktop board";
    summary.pixel_fillrate = 57600;
    summary.texture_fillrate = 115200;
    summary.memory_clock_freq = 1000;
    summary.max_resolution_hdmi_dp = 0x0F00'0870'0000'003C;
    summary.memory_usage = 37;
    summary.use_rate_3d = 0;
    summary.use_rate_video = 30;
    summary.use_rate_vpp = 15;
    summary.temperature = 71;
    summary.link_generation = 4;
    summary.video_decoder_info = 2;
    summary.vbios_version_number = 8;
    summary.pmp_version_number = 3;
    summary.release_date_number = 20240315;
    summary.driver_version_number = 1;
    summary.slice_mask = 7;
    summary.frame_buffer_free = 4096;
    summary.enable_perf = 0;
    summary.enable_usage = 1;
    summary.power_case = 5;
    summary.flip_count = 700;
    summary.blit_count = 900;

    state.segments = {SegmentSource::kNode, {{"0", std::nullopt, {3000, 4000}}}, {3000, 4000}};
    state.clocks.engine = 550;
    state.clocks.video = 350;
    state.clocks.memory = 1000;
    state.clocks.core = 600;
    state.clocks.gfx = 550;
    state.clocks.gfx_voltage = 800;
    state.clocks.level = DVFS_LEVEL_BALANCE;
    state.sensors.temperature = 72;
    state.sensors.fan0 = 1600;
    state.sensors.fan1 = 1650;
    state.counters.engine_3d = 95;
    state.counters.engine_vcp = 30;
    state.counters.engine_vpp = 0;
    state.processes.devices = {
        device_usage(0, 0x13, {{4100003, "maze"}}, 1'610'612'736),
        device_usage(0, 0x11, {{4100001, "compositor"}, {4100007, ""}}, 4096),
    };
    state.processes.total.allocations = 6;
    state.processes.total.segments.front() = 1'610'616'832;
    state.processes.total.bytes = 1'610'616'832;
    state.processes_known = true;
    return state;
}

// One that answered, of which nothing is known.
inline AdapterState unknown_adapter()
{
    AdapterState state;
    state.adapter = {1, "0000:02:00.0", std::nullopt};
    state.there = true;
    return state;
}

inline MachineSnapshot snapshot_of(std::vector<AdapterState> adapters)
{
    MachineSnapshot snapshot;
    snapshot.time = kSnapshotTime;
    snapshot.adapters = std::move(adapters);
    return snapshot;
}

inline const ForeignGpu kForeignGpu{"Gpu0:Intel-GPU", "0000:00:02.0", 0,
                                    0x8086,           0x4680,         {0, 0x200}};

}  // namespace nimba::smi
