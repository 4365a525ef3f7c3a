// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/derived.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(DerivedFigures, TellMemoryInBytesWhateverTheSourcesUnit)
{
    AdapterState state;
    EXPECT_EQ(memory_use(state), (MemoryUse{std::nullopt, std::nullopt}));
    state.segments = {SegmentSource::kNode, {{"0", std::nullopt, {3, 8}}}, {3, 8}};
    EXPECT_EQ(memory_use(state), (MemoryUse{3'000'000, 8'000'000}));
    state.segments.source = SegmentSource::kHeaps;
    EXPECT_EQ(memory_use(state), (MemoryUse{3'145'728, 8'388'608}));
    state.segments.source = SegmentSource::kAllocations;
    state.segments.sum.total = std::nullopt;
    EXPECT_EQ(memory_use(state), (MemoryUse{3'145'728, std::nullopt}));
}

TEST(DerivedFigures, TakeTheTemperatureOfTheSensorBeforeThatOfTheSummary)
{
    AdapterState state;
    EXPECT_EQ(temperature(state), std::nullopt);
    state.summary.temperature = 51;
    EXPECT_EQ(temperature(state), 51);
    state.sensors.temperature = 64;
    EXPECT_EQ(temperature(state), 64);
}

TEST(DerivedFigures, KnowAnAdapterWhoseDriverToldNothing)
{
    AdapterState state;
    state.there = true;
    state.summary.link_width = 16;
    EXPECT_TRUE(is_silent(state));
    AdapterState clocks = state;
    clocks.clocks.gfx = 0;
    EXPECT_FALSE(is_silent(clocks));
    AdapterState sensors = state;
    sensors.sensors.fan1 = 0;
    EXPECT_FALSE(is_silent(sensors));
    AdapterState counters = state;
    counters.counters.engine_vpp = 0;
    EXPECT_FALSE(is_silent(counters));
    AdapterState processes = state;
    processes.processes_known = true;
    EXPECT_FALSE(is_silent(processes));
    AdapterState memory = state;
    memory.segments = {SegmentSource::kNode, {{"0", std::nullopt, {0, 8}}}, {0, 8}};
    EXPECT_FALSE(is_silent(memory));
}

}  // namespace
}  // namespace nimba::smi
