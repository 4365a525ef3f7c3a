// SPDX-License-Identifier: MIT
// What is returned of settings, sensors and segments while the driver fails.
#include "live_adapter_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <algorithm>

namespace nimba::test {
namespace {

// A fault that takes a node away.
class FailingNode : public SteadyAdapter, public testing::WithParamInterface<const char*> {
  protected:
    static std::string at(const char* place)
    {
        const std::string words = GetParam();
        const auto blank = words.find(' ');
        return words.substr(0, blank) + " " + place + words.substr(std::min(blank, words.size()));
    }
};

TEST_P(FailingNode, SettingsWithoutANodeStayAsTheyWere)
{
    fault(at("power_mode --directory info"));
    fault(at("dvfs_control_params --directory info"));
    fault(at("dvfs_level --directory info"));
    fault(at("vclk --directory info"));
    DvfsRegisterState state{};
    state.power_mode = kUntouched;
    state.gfx_check_size = kUntouched;
    state.vpp_low_threshold = kUntouched;
    state.video_clock = kUntouched;
    state.dvfs_level = kUntouched;
    read_into(state);
    EXPECT_EQ(state.power_mode, kUntouched);
    EXPECT_EQ(state.power_gating_3d, 0x64);
    EXPECT_EQ(state.dvfs_mode, 1U);
    EXPECT_EQ(state.gfx_check_size, kUntouched);
    EXPECT_EQ(state.vpp_low_threshold, kUntouched);
    EXPECT_EQ(state.gfx_clock, 550);
    EXPECT_EQ(state.video_clock, 0U);
    EXPECT_EQ(state.memory_clock, 1000U);
    EXPECT_EQ(state.dvfs_level, kUntouched);
}

TEST_P(FailingNode, ValuesAreZeroAndNoTemperatureIsTold)
{
    fault(at("temp1_input --directory hwmon"));
    fault(at("mclk --directory info"));
    EXPECT_EQ(temperature(), "");
    EXPECT_EQ(info_value(INFO_NODE_MCLK), 0);
}

TEST_P(FailingNode, FramesWithoutTheirCountsAreNoNewSample)
{
    auto& start = library_.symbol<decltype(fps_init)>("fps_init");
    auto& get = library_.symbol<decltype(get_fps_info)>("get_fps_info");
    EXPECT_EQ(start(), 0);
    library_.symbol<std::int32_t>("use_IOCTL_get_fps") = 0;
    FpsInfo info{};
    while (get(&info) != 0) {
    }
    fault(at("fps_count --directory info"));
    FpsInfo untouched{-1.0F, -1.0F, -1.0F, -1.0F};
    EXPECT_EQ(get(&untouched), -1);
    EXPECT_EQ(untouched.flips, -1.0F);
    EXPECT_EQ(untouched.average_since, -1.0F);
}

TEST_P(FailingNode, SegmentsWithoutTheirNodeComeFromTheAllocations)
{
    EXPECT_EQ(init_segments(), 1);
    fault(at("segment_info --directory info"));
    SegmentInfo info{};
    EXPECT_EQ(segments(info), -1);
    EXPECT_EQ(info.total_size[0], 0U);
    EXPECT_EQ(init_segments(), -1);
    EXPECT_EQ(segments(info), 0);
    EXPECT_EQ(info.total_size[0], 0U);
}

INSTANTIATE_TEST_SUITE_P(steady, FailingNode,
                         testing::Values("open --error EACCES", "read --error EIO", "vanish"));

TEST_F(SteadyAdapter, AFailingWriteIsNotReported)
{
    fault("write dvfs_level --directory info --error EBUSY");
    DvfsRegisterState state = read();
    state.dvfs_level = DVFS_LEVEL_LOW_POWER;
    write(state);
    EXPECT_EQ(output_of("nimba-sim commands"), "info/0/dvfs_level EBUSY \"lowpower\\n\"\n");
    EXPECT_TRUE(read() == steady_state());
}

TEST_F(SteadyAdapter, ShortReadsAreGoneOnWith)
{
    fault("short '*' --directory info --bytes 1");
    EXPECT_TRUE(read() == steady_state());
}

TEST_F(SteadyAdapter, ASlowNodeIsWaitedFor)
{
    fault("block power_mode --directory info --ms 100");
    EXPECT_TRUE(read() == steady_state());
}

TEST_F(SteadyAdapter, GarbageHasNoSettings)
{
    fault("garbage '*' --directory info --bytes 4096");
    fault("garbage '*' --directory hwmon --bytes 4096 --seed 3");
    DvfsRegisterState state;
    std::memset(&state, 0xA5, sizeof state);
    read_into(state);
    DvfsRegisterState expected;
    std::memset(&expected, 0xA5, sizeof expected);
    expected.video_clock = 0;
    expected.memory_clock = 0;
    EXPECT_TRUE(state == expected);
    EXPECT_EQ(temperature(), "");
    EXPECT_EQ(init_segments(), -1);
}

TEST_F(SteadyAdapter, ADriverThatGoesAwayTellsNothingAndTakesNothing)
{
    const DvfsRegisterState before = read();
    fault("gone");
    DvfsRegisterState state;
    std::memset(&state, 0xA5, sizeof state);
    read_into(state);
    EXPECT_EQ(state.power_mode, kUntouched);
    EXPECT_EQ(state.gfx_voltage, static_cast<std::int32_t>(kUntouched));
    EXPECT_EQ(state.video_clock, 0U);
    EXPECT_EQ(state.dvfs_level, kUntouched);
    EXPECT_EQ(temperature(), "");
    write(before);
    EXPECT_EQ(init_segments(), -1);
    SegmentInfo info{};
    EXPECT_EQ(stdout_of([&] { EXPECT_EQ(segments(info), -1); }).substr(0, 24),
              "Error opening directory\n");
}

// A QV M30 with heaps.
class HeapAdapter : public SteadyAdapter {};

TEST_F(HeapAdapter, SegmentsAreItsHeaps)
{
    EXPECT_EQ(init_segments(), 1);
    SegmentInfo info{};
    EXPECT_EQ(segments(info), 0);
    EXPECT_EQ(info.total_size[0], 0U);
    EXPECT_EQ(info.total_size[1], 2048U);
    EXPECT_EQ(info.total_size[4], 0U);
}

TEST_F(HeapAdapter, AHeapThatVanishedShowsTheTextOfTheHeapBeforeIt)
{
    SegmentInfo whole{};
    EXPECT_EQ(init_segments(), 1);
    EXPECT_EQ(segments(whole), 0);
    fault("vanish heaps/heap_pcie_unsnoop/info");
    SegmentInfo info{};
    EXPECT_EQ(segments(info), 0);
    EXPECT_EQ(info.total_size[2], whole.total_size[1]);
    EXPECT_EQ(info.total_size[3], whole.total_size[3]);
}

TEST_F(HeapAdapter, WithoutAnyHeapSegmentsComeFromTheAllocations)
{
    fault("vanish heaps");
    EXPECT_EQ(stdout_of([&] { EXPECT_EQ(init_segments(), -1); }), "Error opening directory\n");
    SegmentInfo info{};
    EXPECT_EQ(segments(info), 0);
    EXPECT_EQ(info.total_size[1], 0U);
}

TEST_F(HeapAdapter, AHeapThatCannotBeReadFirstEndsTheAttempt)
{
    fault("read heaps/heap_invalid/info");
    EXPECT_EQ(init_segments(), -1);
}

}  // namespace
}  // namespace nimba::test
