// SPDX-License-Identifier: MIT
// Snapshots of made-up machines for the tests of the live view.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::top {

inline DeviceUsage device(int slot, uint32_t number, int pid, std::string name,
                          std::size_t allocations, uint64_t bytes)
{
    DeviceUsage usage;
    usage.slot = slot;
    usage.device = number;
    usage.processes = {{pid, std::move(name)}};
    usage.usage.allocations = allocations;
    usage.usage.bytes = bytes;
    return usage;
}

// A Nimba K1 with 3 of 8 GB in use, 60 % of them by a game.
inline AdapterState first_adapter()
{
    AdapterState state;
    state.adapter = {0, "0000:01:00.0", "Gpu0:Nimba-K1"};
    state.there = true;
    state.summary.driver_version = 0x0000'0001'0002'000A;
    state.summary.link_generation = 4;
    state.summary.link_width = 16;
    state.segments = {SegmentSource::kNode, {{"0", std::nullopt, {3000, 8000}}}, {3000, 8000}};
    state.clocks.core = 1450;
    state.clocks.memory = 2000;
    state.clocks.level = 1;
    state.sensors.temperature = 64;
    state.sensors.fan_speed = 1200;
    state.counters.engine_3d = 58;
    state.counters.engine_vcp = 22;
    state.rates.flips = 90;
    state.rates.both = 96.25;
    state.processes.devices = {device(0, 0x12, 4100003, "/usr/games/maze", 4, 2'000'000'000),
                               device(0, 0x11, 4100001, "/usr/bin/compositor", 20, 400'000'000),
                               device(0, 0x13, 4100002, "/usr/bin/Browser", 7, 40'000'000)};
    state.processes_known = true;
    return state;
}

inline AdapterState second_adapter()
{
    AdapterState state;
    state.adapter = {1, "0000:02:00.0", "Gpu1:QV-M40"};
    state.there = true;
    state.counters.engine_3d = 7;
    state.processes.devices = {device(1, 0x21, 4100005, "/opt/cad/bin/cad", 9, 900'000'000)};
    state.processes_known = true;
    return state;
}

inline AdapterState absent(AdapterState state)
{
    AdapterState gone;
    gone.adapter = std::move(state.adapter);
    return gone;
}

inline MachineSnapshot snapshot_of(std::vector<AdapterState> adapters, int second = 0)
{
    MachineSnapshot snapshot;
    snapshot.time = std::chrono::system_clock::time_point{std::chrono::seconds{second}};
    snapshot.adapters = std::move(adapters);
    return snapshot;
}

}  // namespace nimba::smi::top
