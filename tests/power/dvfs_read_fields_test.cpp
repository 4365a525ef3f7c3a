// SPDX-License-Identifier: MIT
// Where each field of the settings is read from.
#include "dvfs_fixture.hpp"

#include <algorithm>
#include <vector>

namespace nimba::test {
namespace {

using DvfsFields = DvfsTest;

struct Row {
    const char* node;
    const char* key;
    const char* value;
    std::size_t offset;
    std::vector<unsigned char> bytes;
};

const std::vector<Row> kRows{
    {"power_mode", "power_mode:0x", "1a2b3c4d", 0, {0x4d, 0x3c, 0x2b, 0x1a}},
    {"pwm_wait_count", "pg_3d:0x", "1a01", 4, {0x01, 0x1a}},
    {"pwm_wait_count", "cg_3d:0x", "1a02", 6, {0x02, 0x1a}},
    {"pwm_wait_count", "pg_vcp:0x", "1a03", 8, {0x03, 0x1a}},
    {"pwm_wait_count", "cg_vcp:0x", "1a04", 10, {0x04, 0x1a}},
    {"pwm_wait_count", "pg_vpp:0x", "1a05", 12, {0x05, 0x1a}},
    {"pwm_wait_count", "cg_vpp:0x", "1a06", 14, {0x06, 0x1a}},
    {"dvfs_mode", "dvfs_mode:0x", "fedcba98", 16, {0x98, 0xba, 0xdc, 0xfe}},
    {"dvfs_control_params", "gfx_dvfs_checksize:0x", "10203040", 20, {0x40, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "gfx_dvfs_h_threshold:0x", "10203041", 24, {0x41, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "gfx_dvfs_l_threshold:0x", "10203042", 28, {0x42, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vcp0_dvfs_checksize:0x", "10203043", 32, {0x43, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vcp0_dvfs_h_threshold:0x", "10203044", 36, {0x44, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vcp0_dvfs_l_threshold:0x", "10203045", 40, {0x45, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vcp1_dvfs_checksize:0x", "10203046", 44, {0x46, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vcp1_dvfs_h_threshold:0x", "10203047", 48, {0x47, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vcp1_dvfs_l_threshold:0x", "10203048", 52, {0x48, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vpp_dvfs_checksize:0x", "10203049", 56, {0x49, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vpp_dvfs_h_threshold:0x", "1020304a", 60, {0x4a, 0x30, 0x20, 0x10}},
    {"dvfs_control_params", "vpp_dvfs_l_threshold:0x", "1020304b", 64, {0x4b, 0x30, 0x20, 0x10}},
    {"dvfs_clk_voltage", "gfx_clock:", "16909060", 68, {0x04, 0x03, 0x02, 0x01}},
    {"vclk", "", "16909061", 72, {0x05, 0x03, 0x02, 0x01}},
    {"dvfs_clk_voltage", "gfx_voltage:", "16909062", 84, {0x06, 0x03, 0x02, 0x01}},
    {"mclk", "", "16909063", 100, {0x07, 0x03, 0x02, 0x01}},
    {"dvfs_level", "dvfs_level:", "performance", 104, {0x02, 0x00, 0x00, 0x00}},
};

TEST_F(DvfsFields, AreReadEachFromItsKeyAndTheRestStays)
{
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string{row.node} + " " + row.key);
        node(row.node, std::string{row.key} + row.value + "\n");
        StateBytes expected;
        expected.fill(0xEE);
        std::fill_n(expected.begin() + 72, 4, 0);
        std::fill_n(expected.begin() + 100, 4, 0);
        std::copy(row.bytes.begin(), row.bytes.end(),
                  expected.begin() + static_cast<std::ptrdiff_t>(row.offset));
        EXPECT_EQ(std::bit_cast<StateBytes>(read(untouched_state())), expected);
        remove_node(row.node);
    }
}

TEST_F(DvfsFields, StayWhenTheKeyLacksACharacter)
{
    for (const Row& row : kRows) {
        const std::string key = row.key;
        for (std::size_t missing = 0; missing < key.size(); ++missing) {
            const std::string text = std::string{key}.erase(missing, 1) + row.value + "\n";
            SCOPED_TRACE(text);
            node(row.node, text);
            EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
        }
        remove_node(row.node);
    }
}

TEST_F(DvfsFields, AreReadAllTogether)
{
    node("power_mode", "power_mode:0x3\n");
    node("pwm_wait_count",
         "pg_3d:0x1\ncg_3d:0x2\npg_vcp:0x3\ncg_vcp:0x4\npg_vpp:0x5\ncg_vpp:0x6\n");
    node("dvfs_mode", "dvfs_mode:0x7\n");
    node("dvfs_control_params",
         "gfx_dvfs_checksize:0x10\ngfx_dvfs_h_threshold:0x11\ngfx_dvfs_l_threshold:0x12\n"
         "vcp0_dvfs_checksize:0x20\nvcp0_dvfs_h_threshold:0x21\nvcp0_dvfs_l_threshold:0x22\n"
         "vcp1_dvfs_checksize:0x30\nvcp1_dvfs_h_threshold:0x31\nvcp1_dvfs_l_threshold:0x32\n"
         "vpp_dvfs_checksize:0x40\nvpp_dvfs_h_threshold:0x41\nvpp_dvfs_l_threshold:0x42\n");
    node("dvfs_clk_voltage", "gfx_clock:800\ngfx_voltage:900\n");
    node("vclk", "500\n");
    node("mclk", "2400\n");
    node("dvfs_level", "dvfs_level:lowpower\n");
    DvfsRegisterState expected = untouched_state();
    expected.power_mode = 3;
    expected.power_gating_3d = 1;
    expected.clock_gating_3d = 2;
    expected.power_gating_vcp = 3;
    expected.clock_gating_vcp = 4;
    expected.power_gating_vpp = 5;
    expected.clock_gating_vpp = 6;
    expected.dvfs_mode = 7;
    expected.gfx_check_size = 0x10;
    expected.gfx_high_threshold = 0x11;
    expected.gfx_low_threshold = 0x12;
    expected.vcp0_check_size = 0x20;
    expected.vcp0_high_threshold = 0x21;
    expected.vcp0_low_threshold = 0x22;
    expected.vcp1_check_size = 0x30;
    expected.vcp1_high_threshold = 0x31;
    expected.vcp1_low_threshold = 0x32;
    expected.vpp_check_size = 0x40;
    expected.vpp_high_threshold = 0x41;
    expected.vpp_low_threshold = 0x42;
    expected.gfx_clock = 800;
    expected.video_clock = 500;
    expected.gfx_voltage = 900;
    expected.memory_clock = 2400;
    expected.dvfs_level = 1;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsFields, AreReadFromTheNodesInOrderEachOnce)
{
    NodeJournal journal{adapter_.handles().jw_info_dir_fd};
    read();
    EXPECT_EQ(journal.opened(),
              (Texts{"r power_mode", "r pwm_wait_count", "r dvfs_mode", "r dvfs_control_params",
                     "r dvfs_clk_voltage", "r vclk", "r mclk", "r dvfs_level"}));
}

TEST_F(DvfsFields, AreFoundInAnyOrderWithinTheirNode)
{
    node("pwm_wait_count", "cg_vpp:0x6 pg_vpp:0x5 cg_vcp:0x4 pg_vcp:0x3 cg_3d:0x2 pg_3d:0x1");
    node("dvfs_clk_voltage", "gfx_voltage:9 gfx_clock:8");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_gating_3d = 1;
    expected.clock_gating_3d = 2;
    expected.power_gating_vcp = 3;
    expected.clock_gating_vcp = 4;
    expected.power_gating_vpp = 5;
    expected.clock_gating_vpp = 6;
    expected.gfx_clock = 8;
    expected.gfx_voltage = 9;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsFields, AreNotLookedForInTheNodesBehindTheirOwn)
{
    node("dvfs_mode", "power_mode:0x1\npg_3d:0x2\ncg_vpp:0x3\n");
    node("dvfs_clk_voltage", "dvfs_mode:0x4\ngfx_dvfs_checksize:0x5\n");
    node("dvfs_level", "gfx_clock:6\ngfx_voltage:7\n");
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
}

TEST_F(DvfsFields, AreNotReadFromTheHwmonDirectory)
{
    adapter_.hwmon().write("power_mode", "power_mode:0x1\n");
    adapter_.hwmon().write("vclk", "5\n");
    adapter_.hwmon().write("dvfs_level", "dvfs_level:lowpower\n");
    EXPECT_EQ(read(untouched_state()), untouched_state_without_clocks());
}

TEST_F(DvfsFields, OfGatingKeepTheirLow16BitsAndNoNeighbourIsTouched)
{
    const DvfsRegisterState before = untouched_state();
    DvfsRegisterState expected = untouched_state_without_clocks();
    node("pwm_wait_count", "pg_3d:0x12345678\n");
    expected.power_gating_3d = 0x5678;
    EXPECT_EQ(read(before), expected);
    node("pwm_wait_count", "pg_3d:0x1 cg_3d:0x0001ffff\n");
    expected.power_gating_3d = 1;
    expected.clock_gating_3d = -1;
    EXPECT_EQ(read(before), expected);
    node("pwm_wait_count", "cg_vpp:0xffff8000\n");
    expected = untouched_state_without_clocks();
    expected.clock_gating_vpp = -32768;
    EXPECT_EQ(read(before), expected);
    node("pwm_wait_count",
         "pg_3d:0xffff0001 cg_3d:0xffff0002 pg_vcp:0xffff0003 cg_vcp:0xffff0004 "
         "pg_vpp:0xffff0005 cg_vpp:0xffff0006\n");
    expected.power_gating_3d = 1;
    expected.clock_gating_3d = 2;
    expected.power_gating_vcp = 3;
    expected.clock_gating_vcp = 4;
    expected.power_gating_vpp = 5;
    expected.clock_gating_vpp = 6;
    EXPECT_EQ(read(before), expected);
}

TEST_F(DvfsFields, OfWholeNodesAreDecimalAndZeroWithoutANumber)
{
    node("vclk", "0x10\n");
    node("mclk", "-1\n");
    DvfsRegisterState expected = untouched_state();
    expected.video_clock = 0;
    expected.memory_clock = 0xffffffff;
    EXPECT_EQ(read(untouched_state()), expected);
    node("vclk", "500 MHz\n");
    node("mclk", "fast\n");
    expected.video_clock = 500;
    expected.memory_clock = 0;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsFields, ThatAreReservedStayAsTheCallerHadThem)
{
    DvfsRegisterState state{};
    state.reserved0[0] = 0x11111111;
    state.reserved0[1] = 0x22222222;
    state.reserved1[0] = 0x33333333;
    state.reserved1[1] = 0x44444444;
    state.reserved1[2] = 0x55555555;
    node("dvfs_clk_voltage", "gfx_clock:1\ngfx_voltage:2\n");
    DvfsRegisterState expected = state;
    expected.gfx_clock = 1;
    expected.gfx_voltage = 2;
    EXPECT_EQ(read(state), expected);
}

}  // namespace
}  // namespace nimba::test
