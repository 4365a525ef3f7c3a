// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/assignment.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::smi {
namespace {

Assignment assignment(std::string_view name, int64_t value)
{
    return {find_field(name), value};
}

std::string fault(std::string_view text)
{
    const auto parsed = parse_assignment(text);
    const auto* const message = std::get_if<std::string>(&parsed);
    return message == nullptr ? "accepted" : *message;
}

TEST(Assignments, AreAFieldAndAValue)
{
    EXPECT_EQ(std::get<Assignment>(parse_assignment("dvfs_level=performance")),
              assignment("dvfs_level", 2));
    EXPECT_EQ(std::get<Assignment>(parse_assignment("power_gating_3d=0x10")),
              assignment("power_gating_3d", 16));
    EXPECT_EQ(std::get<Assignment>(parse_assignment("gfx_clock=-1")), assignment("gfx_clock", -1));
}

TEST(Assignments, ThatCannotBeMadeAreNamed)
{
    EXPECT_EQ(fault("dvfs_level"), "expected FIELD=VALUE, got \"dvfs_level\"");
    EXPECT_EQ(fault(""), "expected FIELD=VALUE, got \"\"");
    EXPECT_EQ(fault("speed=1"), "there is no field \"speed\"; nimba-smi dvfs get shows all");
    EXPECT_EQ(fault("=1"), "there is no field \"\"; nimba-smi dvfs get shows all");
    EXPECT_EQ(fault("video_clock=1"), "video_clock can only be read");
    EXPECT_EQ(fault("memory_clock=x"), "memory_clock can only be read");
    EXPECT_EQ(fault("power_gating_3d=0x10000"),
              "power_gating_3d: expected a number from 0 to 0xffff, got \"0x10000\"");
    EXPECT_EQ(fault("dvfs_mode=-1"),
              "dvfs_mode: expected a number from 0 to 0xffffffff, got \"-1\"");
    EXPECT_EQ(fault("gfx_clock=fast"),
              "gfx_clock: expected a decimal number from -2147483648 to 2147483647, got \"fast\"");
    EXPECT_EQ(fault("dvfs_level=turbo"),
              "dvfs_level: expected balance, lowpower, performance, or 0 to 2, got \"turbo\"");
    EXPECT_EQ(fault("dvfs_level=1=2"),
              "dvfs_level: expected balance, lowpower, performance, or 0 to 2, got \"1=2\"");
}

TEST(Assignments, AreBroughtIntoTheOrderOfWriting)
{
    EXPECT_EQ(in_order({assignment("gfx_clock", 1), assignment("dvfs_level", 2),
                        assignment("clock_gating_3d", 3), assignment("power_gating_vpp", 4)}),
              (std::vector<Assignment>{assignment("power_gating_vpp", 4),
                                       assignment("clock_gating_3d", 3),
                                       assignment("dvfs_level", 2), assignment("gfx_clock", 1)}));
}

TEST(Assignments, TravelAsText)
{
    const std::vector<Assignment> both{assignment("dvfs_level", 1), assignment("gfx_clock", -5)};
    EXPECT_EQ(encode_assignments(both), "dvfs_level=lowpower gfx_clock=-5");
    EXPECT_EQ(decode_assignments("dvfs_level=lowpower gfx_clock=-5"), both);
    EXPECT_EQ(encode_assignments({}), "");
    EXPECT_EQ(decode_assignments(""), std::vector<Assignment>{});
    EXPECT_EQ(decode_assignments("dvfs_level=4"), std::nullopt);
    EXPECT_EQ(decode_assignments("dvfs_level=1  dvfs_mode=1"), std::nullopt);
    EXPECT_EQ(decode_assignments("video_clock=1"), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
