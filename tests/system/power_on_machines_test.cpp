// SPDX-License-Identifier: MIT
// Settings, sensors and segments of an adapter, as its driver has them and takes them.
#include "live_adapter_fixture.hpp"

namespace nimba::test {
namespace {

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

}  // namespace
}  // namespace nimba::test
