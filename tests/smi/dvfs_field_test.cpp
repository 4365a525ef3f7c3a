// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/field.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::smi {
namespace {

const DvfsField& field(std::string_view name)
{
    return *find_field(name);
}

std::optional<int64_t> parsed(std::string_view name, std::string_view text)
{
    return parse_field_value(field(name), text);
}

std::string line(std::string_view name, int64_t value)
{
    return std::string{field(name).node} + ": " + command_line_of(field(name), value);
}

TEST(DvfsFields, StandInTheOrderInWhichTheLibraryWritesThem)
{
    std::vector<std::string> names;
    for (const DvfsField& known : dvfs_fields()) {
        names.emplace_back(known.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{
                         "power_mode",          "power_gating_3d",    "power_gating_vcp",
                         "power_gating_vpp",    "clock_gating_3d",    "clock_gating_vcp",
                         "clock_gating_vpp",    "dvfs_mode",          "dvfs_level",
                         "gfx_check_size",      "vcp0_check_size",    "vcp1_check_size",
                         "vpp_check_size",      "gfx_high_threshold", "vcp0_high_threshold",
                         "vcp1_high_threshold", "vpp_high_threshold", "gfx_low_threshold",
                         "vcp0_low_threshold",  "vcp1_low_threshold", "vpp_low_threshold",
                         "gfx_clock",           "gfx_voltage",        "video_clock",
                         "memory_clock"}));
    EXPECT_EQ(index_of(field("power_mode")), 0U);
    EXPECT_EQ(index_of(field("memory_clock")), 24U);
}

TEST(DvfsFields, AreFoundByTheirWholeNames)
{
    EXPECT_EQ(find_field(""), nullptr);
    EXPECT_EQ(find_field("gating"), nullptr);
    EXPECT_EQ(find_field("Level"), nullptr);
    EXPECT_EQ(find_field("dvfs_level "), nullptr);
    ASSERT_NE(find_field("dvfs_level"), nullptr);
    EXPECT_TRUE(find_field("dvfs_level")->writable);
    EXPECT_FALSE(find_field("video_clock")->writable);
    EXPECT_FALSE(find_field("memory_clock")->writable);
}

TEST(DvfsValues, OfWordsAreDecimalOrHexadecimal)
{
    EXPECT_EQ(parsed("power_mode", "0"), 0);
    EXPECT_EQ(parsed("power_mode", "16"), 16);
    EXPECT_EQ(parsed("power_mode", "0x1F"), 31);
    EXPECT_EQ(parsed("power_mode", "0xffffffff"), 4294967295);
    EXPECT_EQ(parsed("power_mode", "4294967295"), 4294967295);
    EXPECT_EQ(parsed("power_gating_3d", "0xffff"), 65535);
}

TEST(DvfsValues, BeyondTheWidthOfTheFieldAreNone)
{
    EXPECT_EQ(parsed("power_mode", "4294967296"), std::nullopt);
    EXPECT_EQ(parsed("power_mode", "0x100000000"), std::nullopt);
    EXPECT_EQ(parsed("power_gating_3d", "0x10000"), std::nullopt);
    EXPECT_EQ(parsed("power_gating_3d", "65536"), std::nullopt);
    EXPECT_EQ(parsed("gfx_clock", "2147483648"), std::nullopt);
    EXPECT_EQ(parsed("gfx_clock", "-2147483649"), std::nullopt);
    EXPECT_EQ(parsed("dvfs_level", "3"), std::nullopt);
}

TEST(DvfsValues, AreWholeTexts)
{
    for (const char* text :
         {"", " ", "-1", "+1", "0x", "x1", "1 ", " 1", "1.0", "0x1g", "0x-1", "1e3", "ff"}) {
        EXPECT_EQ(parsed("power_mode", text), std::nullopt) << text;
    }
    EXPECT_EQ(parsed("gfx_voltage", "0x10"), std::nullopt);
    EXPECT_EQ(parsed("dvfs_level", "Balance"), std::nullopt);
    EXPECT_EQ(parsed("dvfs_level", "perf"), std::nullopt);
}

TEST(DvfsValues, OfClockAndVoltageHaveASign)
{
    EXPECT_EQ(parsed("gfx_clock", "-2147483648"), -2147483648);
    EXPECT_EQ(parsed("gfx_voltage", "2147483647"), 2147483647);
    EXPECT_EQ(value_text(field("gfx_clock"), -5), "-5");
}

TEST(DvfsValues, OfTheLevelAreWordsAndNumbers)
{
    EXPECT_EQ(parsed("dvfs_level", "balance"), 0);
    EXPECT_EQ(parsed("dvfs_level", "lowpower"), 1);
    EXPECT_EQ(parsed("dvfs_level", "performance"), 2);
    EXPECT_EQ(parsed("dvfs_level", "2"), 2);
    EXPECT_EQ(value_text(field("dvfs_level"), 1), "lowpower");
}

TEST(DvfsValues, AreShownAsTheyAreTyped)
{
    EXPECT_EQ(value_text(field("power_mode"), 0), "0x0");
    EXPECT_EQ(value_text(field("dvfs_mode"), 4294967295), "0xffffffff");
    EXPECT_EQ(value_text(field("clock_gating_vpp"), 65535), "0xffff");
    EXPECT_EQ(value_text(field("video_clock"), 1200), "1200");
    EXPECT_EQ(value_text(field("dvfs_mode"), std::optional<int64_t>{}), "not available");
    EXPECT_EQ(value_text(field("dvfs_mode"), std::optional<int64_t>{1}), "0x1");
}

TEST(DvfsLines, AreThoseOfTheDriver)
{
    EXPECT_EQ(line("power_mode", 31), "power_mode: 0x1f");
    EXPECT_EQ(line("power_gating_3d", 16), "pwm_wait_count: 0 0 10");
    EXPECT_EQ(line("power_gating_vcp", 16), "pwm_wait_count: 0 1 10");
    EXPECT_EQ(line("power_gating_vpp", 16), "pwm_wait_count: 0 2 10");
    EXPECT_EQ(line("clock_gating_3d", 0), "pwm_wait_count: 1 0 0");
    EXPECT_EQ(line("clock_gating_vcp", 0), "pwm_wait_count: 1 1 0");
    EXPECT_EQ(line("clock_gating_vpp", 0), "pwm_wait_count: 1 2 0");
    EXPECT_EQ(line("dvfs_mode", 1), "dvfs_mode: 0x1");
    EXPECT_EQ(line("dvfs_level", 0), "dvfs_level: balance");
    EXPECT_EQ(line("dvfs_level", 1), "dvfs_level: lowpower");
    EXPECT_EQ(line("dvfs_level", 2), "dvfs_level: performance");
    EXPECT_EQ(line("gfx_check_size", 10), "dvfs_control_params: 0 0 a");
    EXPECT_EQ(line("gfx_high_threshold", 10), "dvfs_control_params: 0 1 a");
    EXPECT_EQ(line("gfx_low_threshold", 10), "dvfs_control_params: 0 2 a");
    EXPECT_EQ(line("vcp0_check_size", 10), "dvfs_control_params: 1 0 a");
    EXPECT_EQ(line("vcp0_high_threshold", 10), "dvfs_control_params: 1 1 a");
    EXPECT_EQ(line("vcp0_low_threshold", 10), "dvfs_control_params: 1 2 a");
    EXPECT_EQ(line("vcp1_check_size", 10), "dvfs_control_params: 2 0 a");
    EXPECT_EQ(line("vcp1_high_threshold", 10), "dvfs_control_params: 2 1 a");
    EXPECT_EQ(line("vcp1_low_threshold", 10), "dvfs_control_params: 2 2 a");
    EXPECT_EQ(line("vpp_check_size", 10), "dvfs_control_params: 3 0 a");
    EXPECT_EQ(line("vpp_high_threshold", 4294967295), "dvfs_control_params: 3 1 ffffffff");
    EXPECT_EQ(line("vpp_low_threshold", 10), "dvfs_control_params: 3 2 a");
    EXPECT_EQ(line("gfx_clock", -800), "dvfs_clk_voltage: c 0 -800");
    EXPECT_EQ(line("gfx_voltage", 900), "dvfs_clk_voltage: v 0 900");
}

TEST(DvfsLines, WidenGatingWithItsSign)
{
    EXPECT_EQ(line("power_gating_3d", 32767), "pwm_wait_count: 0 0 7fff");
    EXPECT_EQ(line("power_gating_3d", 32768), "pwm_wait_count: 0 0 ffff8000");
    EXPECT_EQ(line("clock_gating_3d", 65535), "pwm_wait_count: 1 0 ffffffff");
}

TEST(DvfsRecord, HoldsEachFieldAtItsPlace)
{
    DvfsRegisterState state{};
    set_value(state, field("power_gating_3d"), 65535);
    set_value(state, field("dvfs_mode"), 7);
    EXPECT_EQ(state.power_gating_3d, -1);
    EXPECT_EQ(state.clock_gating_3d, 0);
    EXPECT_EQ(state.dvfs_mode, 7U);
    EXPECT_EQ(value_in(state, field("power_gating_3d")), 65535);
    set_value(state, field("power_mode"), 4294967295);
    EXPECT_EQ(state.power_mode, 4294967295U);
    EXPECT_EQ(value_in(state, field("power_mode")), 4294967295);
    set_value(state, field("gfx_voltage"), -1);
    EXPECT_EQ(state.gfx_voltage, -1);
    EXPECT_EQ(value_in(state, field("gfx_voltage")), -1);
    set_value(state, field("dvfs_level"), 2);
    EXPECT_EQ(state.dvfs_level, 2U);
    state.memory_clock = 1200;
    EXPECT_EQ(value_in(state, field("memory_clock")), 1200);
}

}  // namespace
}  // namespace nimba::smi
