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
    EXPECT_EQ(std::get<Assignment>(parse_assignment("level=performance")), assignment("level", 2));
    EXPECT_EQ(std::get<Assignment>(parse_assignment("gating.3d.power=0x10")),
              assignment("gating.3d.power", 16));
    EXPECT_EQ(std::get<Assignment>(parse_assignment("gfx.clock=-1")), assignment("gfx.clock", -1));
}

TEST(Assignments, ThatCannotBeMadeAreNamed)
{
    EXPECT_EQ(fault("level"), "expected FIELD=VALUE, got \"level\"");
    EXPECT_EQ(fault(""), "expected FIELD=VALUE, got \"\"");
    EXPECT_EQ(fault("speed=1"), "there is no field \"speed\"; nimba-smi dvfs get shows all");
    EXPECT_EQ(fault("=1"), "there is no field \"\"; nimba-smi dvfs get shows all");
    EXPECT_EQ(fault("video_clock=1"), "video_clock can only be read");
    EXPECT_EQ(fault("memory_clock=x"), "memory_clock can only be read");
    EXPECT_EQ(fault("gating.3d.power=0x10000"),
              "gating.3d.power: expected a number from 0 to 0xffff, got \"0x10000\"");
    EXPECT_EQ(fault("mode=-1"), "mode: expected a number from 0 to 0xffffffff, got \"-1\"");
    EXPECT_EQ(fault("gfx.clock=fast"),
              "gfx.clock: expected a decimal number from -2147483648 to 2147483647, got \"fast\"");
    EXPECT_EQ(fault("level=turbo"),
              "level: expected balance, lowpower, performance, or 0 to 2, got \"turbo\"");
    EXPECT_EQ(fault("level=1=2"),
              "level: expected balance, lowpower, performance, or 0 to 2, got \"1=2\"");
}

TEST(Assignments, AreBroughtIntoTheOrderOfWriting)
{
    EXPECT_EQ(in_order({assignment("gfx.clock", 1), assignment("level", 2),
                        assignment("gating.3d.clock", 3), assignment("gating.vpp.power", 4)}),
              (std::vector<Assignment>{assignment("gating.vpp.power", 4),
                                       assignment("gating.3d.clock", 3), assignment("level", 2),
                                       assignment("gfx.clock", 1)}));
}

TEST(Assignments, TravelAsText)
{
    const std::vector<Assignment> both{assignment("level", 1), assignment("gfx.clock", -5)};
    EXPECT_EQ(encode_assignments(both), "level=lowpower gfx.clock=-5");
    EXPECT_EQ(decode_assignments("level=lowpower gfx.clock=-5"), both);
    EXPECT_EQ(encode_assignments({}), "");
    EXPECT_EQ(decode_assignments(""), std::vector<Assignment>{});
    EXPECT_EQ(decode_assignments("level=4"), std::nullopt);
    EXPECT_EQ(decode_assignments("level=1  mode=1"), std::nullopt);
    EXPECT_EQ(decode_assignments("video_clock=1"), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
