// SPDX-License-Identifier: MIT
// One buffer holds the nodes' texts, one after the other: behind a short text stands what a longer
// one left.
#include "dvfs_fixture.hpp"

namespace nimba::test {
namespace {

using DvfsLeftovers = DvfsTest;

TEST_F(DvfsLeftovers, GiveTheKeysOfAMissingNode)
{
    node("power_mode",
         "power_mode:0x5\npg_3d:0x7\ndvfs_mode:0x8\ngfx_dvfs_checksize:0x9\n"
         "gfx_clock:10\ngfx_voltage:11\ndvfs_level:performance\n");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_mode = 5;
    expected.power_gating_3d = 7;
    expected.dvfs_mode = 8;
    expected.gfx_check_size = 9;
    expected.gfx_clock = 10;
    expected.gfx_voltage = 11;
    expected.dvfs_level = 2;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, GiveTheKeysOfANodeThatCannotBeRead)
{
    node("power_mode", "power_mode:0x5\npg_3d:0x7\n");
    node("dvfs_mode", "");
    std::filesystem::create_directory(adapter_.info().path() / "pwm_wait_count");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_mode = 5;
    expected.power_gating_3d = 7;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, GiveTheKeysThatAShorterTextLacks)
{
    node("power_mode", "power_mode:0x5\ncg_3d:0x9\npg_vcp:0xa\n");
    node("pwm_wait_count", "pg_3d:0x1\n");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_mode = 5;
    expected.power_gating_3d = 1;
    expected.clock_gating_3d = 9;
    expected.power_gating_vcp = 10;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, GiveWayToTheNodesOwnKeyInFrontOfThem)
{
    node("power_mode", "power_mode:0x5\npg_3d:0x9\n");
    node("pwm_wait_count", "pg_3d:0x1\n");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_mode = 5;
    expected.power_gating_3d = 1;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, AreOverwrittenByALongerText)
{
    node("power_mode", "power_mode:0x5\ncg_3d:0x9\n");
    node("pwm_wait_count", "pg_3d:0x1, and nothing else to see\n");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_mode = 5;
    expected.power_gating_3d = 1;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, GoOnANumberThatEndsTheText)
{
    node("power_mode", "power_mode:0x1234\n");
    node("dvfs_mode", "dvfs_mode:0xa");
    node("dvfs_clk_voltage", "gfx_clock:...");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_mode = 0x1234;
    expected.dvfs_mode = 0xa1234;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, GoOnAKeyThatEndsTheText)
{
    node("power_mode", "power_m:0x77\n");
    node("dvfs_mode", "dvfs_mode");
    EXPECT_EQ(read(untouched_state()).dvfs_mode, 0xEEEEEEEEU);
    node("power_mode", "12345678:0x77\n");
    node("dvfs_mode", "dvfs_mode:0x");
    EXPECT_EQ(read(untouched_state()).dvfs_mode, 7U);
    node("power_mode", "123456789:0x77\n");
    node("dvfs_mode", "dvfs_mode");
    EXPECT_EQ(read(untouched_state()).dvfs_mode, 0x77U);
}

TEST_F(DvfsLeftovers, TellTheLevelOfAMissingNode)
{
    node("dvfs_clk_voltage", "gfx_clock:1\ndvfs_level:lowpower\n");
    EXPECT_EQ(read(untouched_state()).dvfs_level, 1U);
    node("dvfs_level", "dvfs_level:");
    EXPECT_EQ(read(untouched_state()).dvfs_level, 1U);
    node("dvfs_level", "dvfs_level:performance\n");
    EXPECT_EQ(read(untouched_state()).dvfs_level, 2U);
}

TEST_F(DvfsLeftovers, AreNotLeftByTheReadOnlyClocks)
{
    node("vclk", "5 dvfs_level:performance\n");
    node("mclk", "6 dvfs_level:performance\n");
    DvfsRegisterState expected = untouched_state();
    expected.video_clock = 5;
    expected.memory_clock = 6;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsLeftovers, OfOneReadingAreNotSeenByTheNext)
{
    node("power_mode", "power_mode:0x5\npg_3d:0x7\n");
    node("dvfs_level", "power_mode:0x6\npg_3d:0x8\ndvfs_level:lowpower\n");
    read();
    remove_node("power_mode");
    remove_node("dvfs_level");
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
}

}  // namespace
}  // namespace nimba::test
