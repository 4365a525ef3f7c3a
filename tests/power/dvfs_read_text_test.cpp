// SPDX-License-Identifier: MIT
// How a node's text is read, whatever bytes it holds.
#include "dvfs_fixture.hpp"

namespace nimba::test {
namespace {

constexpr std::uint32_t kStays = 0xEEEEEEEE;

class DvfsText : public DvfsTest {
  protected:
    std::uint32_t power_mode_of(std::string_view text) const
    {
        node("power_mode", text);
        return read(untouched_state()).power_mode;
    }
    std::int32_t clock_of(std::string_view text) const
    {
        node("dvfs_clk_voltage", text);
        return read(untouched_state()).gfx_clock;
    }
};

std::string filled(std::size_t bytes, const std::string& text)
{
    return std::string(bytes, '.') + text;
}

TEST_F(DvfsText, HoldsHexadecimalNumbersBehindKeys)
{
    EXPECT_EQ(power_mode_of("power_mode:0x0\n"), 0U);
    EXPECT_EQ(power_mode_of("power_mode:0xabcdef\n"), 0xabcdefU);
    EXPECT_EQ(power_mode_of("power_mode:0xABCDEF\n"), 0xabcdefU);
    EXPECT_EQ(power_mode_of("power_mode:0x10"), 0x10U);
    EXPECT_EQ(power_mode_of("power_mode:0x000000012\n"), 0x12U);
    EXPECT_EQ(power_mode_of("power_mode:0xffffffff\n"), 0xffffffffU);
    EXPECT_EQ(power_mode_of("power_mode:0x1g\n"), 1U);
    EXPECT_EQ(power_mode_of("mode power_mode:0x2\n"), 2U);
    EXPECT_EQ(power_mode_of("xpower_mode:0x3\n"), 3U);
}

TEST_F(DvfsText, HoldsHexadecimalNumbersByTheRulesOfScanf)
{
    EXPECT_EQ(power_mode_of("power_mode:0x 5\n"), 5U);
    EXPECT_EQ(power_mode_of("power_mode:0x\n\t6\n"), 6U);
    EXPECT_EQ(power_mode_of("power_mode:0x0x7\n"), 7U);
    EXPECT_EQ(power_mode_of("power_mode:0x+8\n"), 8U);
    EXPECT_EQ(power_mode_of("power_mode:0x-1\n"), 0xffffffffU);
}

TEST_F(DvfsText, HoldsDecimalNumbersOfClockAndVoltage)
{
    EXPECT_EQ(clock_of("gfx_clock:1250\n"), 1250);
    EXPECT_EQ(clock_of("gfx_clock:-7\n"), -7);
    EXPECT_EQ(clock_of("gfx_clock:+7\n"), 7);
    EXPECT_EQ(clock_of("gfx_clock: 1250 MHz\n"), 1250);
    EXPECT_EQ(clock_of("gfx_clock:0x10\n"), 0);
    EXPECT_EQ(clock_of("gfx_clock:12ab\n"), 12);
    EXPECT_EQ(clock_of("gfx_clock:010\n"), 10);
    EXPECT_EQ(clock_of("gfx_clock:2147483647\n"), 2147483647);
    EXPECT_EQ(clock_of("gfx_clock:-2147483648\n"), -2147483647 - 1);
    node("dvfs_clk_voltage", "gfx_voltage:-12ab\n");
    EXPECT_EQ(read(untouched_state()).gfx_voltage, -12);
}

TEST_F(DvfsText, WithoutAKeyLeavesTheField)
{
    EXPECT_EQ(power_mode_of(""), kStays);
    EXPECT_EQ(power_mode_of("\n"), kStays);
    EXPECT_EQ(power_mode_of("5\n"), kStays);
    EXPECT_EQ(power_mode_of("0x5\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:5\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode: 0x5\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:0X5\n"), kStays);
    EXPECT_EQ(power_mode_of("Power_mode:0x5\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mod"), kStays);
    EXPECT_EQ(clock_of("gfx_clk:5\n"), -286331154);
}

TEST_F(DvfsText, WithoutANumberBehindTheKeyLeavesTheField)
{
    EXPECT_EQ(power_mode_of("power_mode:0x"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:0x\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:0xz5\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:0x:5\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:0x--5\n"), kStays);
    EXPECT_EQ(clock_of("gfx_clock:"), -286331154);
    EXPECT_EQ(clock_of("gfx_clock:fast\n"), -286331154);
    EXPECT_EQ(clock_of("gfx_clock:- 5\n"), -286331154);
}

TEST_F(DvfsText, IsSearchedForTheFirstOfEqualKeys)
{
    EXPECT_EQ(power_mode_of("power_mode:0x1\npower_mode:0x2\n"), 1U);
    EXPECT_EQ(power_mode_of("power_mode:0x?\npower_mode:0x2\n"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:power_mode:0x2\n"), 2U);
    EXPECT_EQ(power_mode_of("power_power_mode:0x3\n"), 3U);
}

TEST_F(DvfsText, WithoutOneKeyStillGivesTheOthers)
{
    node("pwm_wait_count", "pg_3d:0x1\npg_vcp:0x3\ncg_vcp:0xz\ncg_vpp:0x6\n");
    node("dvfs_control_params", "vpp_dvfs_l_threshold:0x9\n");
    node("dvfs_clk_voltage", "gfx_voltage:5\n");
    DvfsRegisterState expected = untouched_state_without_clocks();
    expected.power_gating_3d = 1;
    expected.power_gating_vcp = 3;
    expected.clock_gating_vpp = 6;
    expected.vpp_low_threshold = 9;
    expected.gfx_voltage = 5;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsText, IsSearchedBehindNuls)
{
    EXPECT_EQ(power_mode_of({"\0\0power_mode:0x5\n", 17}), 5U);
    EXPECT_EQ(power_mode_of({"x\0power_mode:0x5\0007", 18}), 5U);
    EXPECT_EQ(power_mode_of({"power_mode\0:0x5\n", 16}), kStays);
}

TEST_F(DvfsText, EndsForANumberAtANul)
{
    EXPECT_EQ(power_mode_of({"power_mode:0x\0005\n", 16}), kStays);
    EXPECT_EQ(power_mode_of({"power_mode:0x1\0002\n", 17}), 1U);
}

TEST_F(DvfsText, MayHoldAnyBytes)
{
    std::string bytes;
    for (int byte = 255; byte >= 0; --byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(power_mode_of(bytes), kStays);
    EXPECT_EQ(power_mode_of(bytes + bytes), kStays);
    EXPECT_EQ(power_mode_of(bytes + "power_mode:0x5"), 5U);
    EXPECT_EQ(power_mode_of("power_mode:0x\xff\xfe"), kStays);
    EXPECT_EQ(power_mode_of("power_mode:0x4\xff"), 4U);
}

TEST_F(DvfsText, BehindByte512IsNotSeen)
{
    EXPECT_EQ(power_mode_of(filled(512, "power_mode:0x5\n")), kStays);
    EXPECT_EQ(power_mode_of(filled(505, "power_mode:0x5\n")), kStays);
    EXPECT_EQ(power_mode_of(filled(100000, "power_mode:0x5\n")), kStays);
    EXPECT_EQ(power_mode_of(filled(497, "power_mode:0x5\n")), 5U);
}

TEST_F(DvfsText, EndsForANumberAtByte512)
{
    EXPECT_EQ(power_mode_of(filled(497, "power_mode:0x56")), 0x56U);
    EXPECT_EQ(power_mode_of(filled(497, "power_mode:0x567\n")), 0x56U);
    EXPECT_EQ(power_mode_of(filled(498, "power_mode:0x567\n")), 5U);
    EXPECT_EQ(clock_of(filled(499, "gfx_clock:1234\n")), 123);
}

TEST_F(DvfsText, HasNoKeyThatEndsAtByte512)
{
    EXPECT_EQ(power_mode_of(filled(499, "power_mode:0x5\n")), kStays);
    EXPECT_EQ(clock_of(filled(502, "gfx_clock:5\n")), -286331154);
}

}  // namespace
}  // namespace nimba::test
