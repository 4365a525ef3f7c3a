// SPDX-License-Identifier: MIT
// Settings, sensors and segments of an adapter whose driver parses each command and answers the
// next read from its new state, and what is returned while that driver fails.
#include "machine_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <ostream>

namespace nimba::test {

static bool operator==(const DvfsRegisterState& one, const DvfsRegisterState& other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

namespace {

constexpr std::uint32_t kUntouched = 0xA5A5A5A5;

std::string output_of(const std::string& command)
{
    struct Close {
        void operator()(std::FILE* pipe) const { ::pclose(pipe); }
    };
    const std::unique_ptr<std::FILE, Close> pipe{::popen(command.c_str(), "r")};
    std::string output;
    std::array<char, 4096> part{};
    std::size_t length = 0;
    while ((length = std::fread(part.data(), 1, part.size(), pipe.get())) > 0) {
        output.append(part.data(), length);
    }
    return output;
}

// A Nimba K5 under a load that never changes.
class SteadyAdapter : public MachineTest {
  protected:
    SteadyAdapter()
    {
        discover();
        EXPECT_GT(init(0), 0);
        struct statfs system {};
        constexpr long kFuse = 0x65735546;
        live_ =
            fstatfs(record_.gpu_infos[0].jw_info_dir_fd, &system) == 0 && system.f_type == kFuse;
        if (live_) {
            EXPECT_EQ(output_of("nimba-sim commands --clear 2>&1"), "");
        }
    }
    ~SteadyAdapter() override
    {
        if (live_) {
            EXPECT_EQ(output_of("nimba-sim fault --clear 2>&1"), "");
        }
        exit(0);
    }

    void SetUp() override
    {
        if (!live_) {
            GTEST_SKIP() << "needs live drivers";
        }
    }

    static void fault(const std::string& arguments)
    {
        ASSERT_EQ(output_of("nimba-sim fault " + arguments + " 2>&1"), "");
    }

    DvfsRegisterState read() const
    {
        DvfsRegisterState state{};
        state.dvfs_level = kUntouched;
        state.reserved0[0] = 0;
        read_into(state);
        return state;
    }

    void read_into(DvfsRegisterState& state) const
    {
        auto& get =
            library_.symbol<decltype(get_data_from_dvfs_register)>("get_data_from_dvfs_register");
        std::uint32_t valid = 0;
        EXPECT_EQ(get(&state, &valid), 0);
        EXPECT_EQ(valid, 1U);
    }

    void write(const DvfsRegisterState& state) const
    {
        auto& set =
            library_.symbol<decltype(set_data_to_dvfs_register)>("set_data_to_dvfs_register");
        EXPECT_EQ(set(&state), 0);
    }

    std::int32_t info_value(info_node node) const
    {
        return library_.symbol<decltype(gpuinfo_get_jwinfoFD_value_int)>(
            "gpuinfo_get_jwinfoFD_value_int")(node);
    }

    // The temperature, or nothing where none could be read.
    std::string temperature() const
    {
        std::uint32_t count = kUntouched;
        const std::int32_t value = library_.symbol<decltype(gpuinfo_get_temparature_value_int)>(
            "gpuinfo_get_temparature_value_int")(&count);
        return count == 1 ? std::to_string(value) : "";
    }

    std::int32_t segments(SegmentInfo& info) const
    {
        return library_.symbol<decltype(get_segment_info)>("get_segment_info")(&info);
    }

    std::int32_t init_segments()
    {
        return library_.symbol<decltype(segment_init)>("segment_init")(&record_);
    }

    bool live_ = false;
};

// What the driver shows at the start, with a clock and a voltage of its own while it is automatic.
DvfsRegisterState steady_state()
{
    DvfsRegisterState state{};
    state.power_mode = 1;
    state.power_gating_3d = 0x64;
    state.clock_gating_3d = 0x10;
    state.power_gating_vcp = 0x64;
    state.clock_gating_vcp = 0x10;
    state.power_gating_vpp = 0x64;
    state.clock_gating_vpp = 0x10;
    state.dvfs_mode = 1;
    state.gfx_check_size = state.vcp0_check_size = 0x40;
    state.vcp1_check_size = state.vpp_check_size = 0x40;
    state.gfx_high_threshold = state.vcp0_high_threshold = 0x50;
    state.vcp1_high_threshold = state.vpp_high_threshold = 0x50;
    state.gfx_low_threshold = state.vcp0_low_threshold = 0x1E;
    state.vcp1_low_threshold = state.vpp_low_threshold = 0x1E;
    state.gfx_clock = 550;
    state.video_clock = 350;
    state.gfx_voltage = 800;
    state.memory_clock = 1000;
    state.dvfs_level = DVFS_LEVEL_BALANCE;
    return state;
}

// Another value in every field that can be written.
DvfsRegisterState other_state()
{
    DvfsRegisterState state{};
    state.power_mode = 0x7;
    state.power_gating_3d = 0x11;
    state.clock_gating_3d = 0x12;
    state.power_gating_vcp = 0x13;
    state.clock_gating_vcp = 0x14;
    state.power_gating_vpp = -1;
    state.clock_gating_vpp = 0x16;
    state.dvfs_mode = 0;
    state.gfx_check_size = 0x21;
    state.gfx_high_threshold = 0x22;
    state.gfx_low_threshold = 0x23;
    state.vcp0_check_size = 0x24;
    state.vcp0_high_threshold = 0x25;
    state.vcp0_low_threshold = 0x26;
    state.vcp1_check_size = 0x27;
    state.vcp1_high_threshold = 0x28;
    state.vcp1_low_threshold = 0x29;
    state.vpp_check_size = 0x2A;
    state.vpp_high_threshold = 0x2B;
    state.vpp_low_threshold = 0xFFFFFFFF;
    state.gfx_clock = 1234;
    state.gfx_voltage = 777;
    state.dvfs_level = DVFS_LEVEL_PERFORMANCE;
    state.video_clock = 700;  // that of the level
    state.memory_clock = 2000;
    return state;
}

TEST_F(SteadyAdapter, SettingsAreThoseOfTheDriver)
{
    EXPECT_TRUE(read() == steady_state());
}

TEST_F(SteadyAdapter, EverySettingComesBackFromTheDriver)
{
    read();
    write(other_state());
    EXPECT_TRUE(read() == other_state());
    EXPECT_EQ(output_of("nimba-sim commands"),
              "info/0/power_mode ok \"0x7\\n\"\n"
              "info/0/pwm_wait_count ok \"0 0 11\\n\"\n"
              "info/0/pwm_wait_count ok \"0 1 13\\n\"\n"
              "info/0/pwm_wait_count ok \"0 2 ffffffff\\n\"\n"
              "info/0/pwm_wait_count ok \"1 0 12\\n\"\n"
              "info/0/pwm_wait_count ok \"1 1 14\\n\"\n"
              "info/0/pwm_wait_count ok \"1 2 16\\n\"\n"
              "info/0/dvfs_mode ok \"0x0\\n\"\n"
              "info/0/dvfs_level ok \"performance\\n\"\n"
              "info/0/dvfs_control_params ok \"0 0 21\\n\"\n"
              "info/0/dvfs_control_params ok \"1 0 24\\n\"\n"
              "info/0/dvfs_control_params ok \"2 0 27\\n\"\n"
              "info/0/dvfs_control_params ok \"3 0 2a\\n\"\n"
              "info/0/dvfs_control_params ok \"0 1 22\\n\"\n"
              "info/0/dvfs_control_params ok \"1 1 25\\n\"\n"
              "info/0/dvfs_control_params ok \"2 1 28\\n\"\n"
              "info/0/dvfs_control_params ok \"3 1 2b\\n\"\n"
              "info/0/dvfs_control_params ok \"0 2 23\\n\"\n"
              "info/0/dvfs_control_params ok \"1 2 26\\n\"\n"
              "info/0/dvfs_control_params ok \"2 2 29\\n\"\n"
              "info/0/dvfs_control_params ok \"3 2 ffffffff\\n\"\n"
              "info/0/dvfs_clk_voltage ok \"c 0 1234\\n\"\n"
              "info/0/dvfs_clk_voltage ok \"v 0 777\\n\"\n");
    write(steady_state());
    EXPECT_TRUE(read() == steady_state());
}

TEST_F(SteadyAdapter, ARejectedCommandChangesNothingAndIsNotReported)
{
    DvfsRegisterState state = read();
    state.gfx_clock = 1;  // below what the driver takes
    state.power_mode = 9;
    write(state);
    EXPECT_EQ(output_of("nimba-sim commands"),
              "info/0/power_mode ok \"0x9\\n\"\ninfo/0/dvfs_clk_voltage EINVAL \"c 0 1\\n\"\n");
    DvfsRegisterState expected = steady_state();
    expected.power_mode = 9;
    EXPECT_TRUE(read() == expected);
    expected.power_mode = 1;
    write(expected);
}

TEST_F(SteadyAdapter, TheControlFlagIsSetInTheDriver)
{
    auto& set = library_.symbol<decltype(gpuinfo_set_misc_ctl_flag)>("gpuinfo_set_misc_ctl_flag");
    set(3, 0);
    EXPECT_EQ(info_value(INFO_NODE_MISC_CTL_FLAG), 3);
    set(4, 1);
    EXPECT_EQ(info_value(INFO_NODE_MISC_CTL_FLAG), 6);
    set(0, -1);
    EXPECT_EQ(info_value(INFO_NODE_MISC_CTL_FLAG), 0);
    EXPECT_EQ(output_of("nimba-sim commands"),
              "info/0/misc_ctl_flag ok \"3\\n\"\n"
              "info/0/misc_ctl_flag ok \"6\\n\"\n"
              "info/0/misc_ctl_flag ok \"0\\n\"\n");
}

TEST_F(SteadyAdapter, SensorsAndSegmentsAreThoseOfTheDriver)
{
    EXPECT_EQ(temperature(), "50");
    std::uint32_t bytes = 0;
    auto& hwmon_value =
        library_.symbol<decltype(gpuinfo_get_hwmonFD_value_int)>("gpuinfo_get_hwmonFD_value_int");
    EXPECT_EQ(hwmon_value(HWMON_NODE_FAN0_INPUT, &bytes), 1600);
    EXPECT_EQ(bytes, 5U);
    EXPECT_EQ(hwmon_value(HWMON_NODE_NONE, &bytes), 0);
    EXPECT_EQ(bytes, 0U);
    EXPECT_EQ(init_segments(), 1);
    SegmentInfo info{};
    EXPECT_EQ(segments(info), 1);
    EXPECT_EQ(info.total_size[0], 4294U);
    EXPECT_EQ(info.total_size[1], 2147U);
    EXPECT_EQ(info.total_size[2], 1073U);
    EXPECT_EQ(info.total_size[3], 0U);
    EXPECT_EQ(info.used_size[0], 268U);
    EXPECT_EQ(info.used_size[1], 33U);
}

TEST_F(SteadyAdapter, AccountingIsOnUntilTheLibraryStops)
{
    EXPECT_EQ(info_value(INFO_NODE_ENABLE_USAGE), 1);
    EXPECT_EQ(info_value(INFO_NODE_ENGINE_3D_USAGE), 45);
    exit(0);
    EXPECT_EQ(info_value(INFO_NODE_ENABLE_USAGE), 0);
    EXPECT_EQ(info_value(INFO_NODE_ENGINE_3D_USAGE), 0);
    EXPECT_GT(init(0), 0);
}

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
