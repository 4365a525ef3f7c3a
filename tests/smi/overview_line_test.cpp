// SPDX-License-Identifier: MIT
#include "tools/smi/overview/line.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

constexpr OverviewStyle kPlain;
constexpr OverviewStyle kRich{80, true, true};
constexpr OverviewStyle kBlocks{80, true, false};

TEST(OverviewLine, IsFilledWithBlanksAndEndsWithoutThem)
{
    EXPECT_EQ((Line{kPlain, 10}.text()), "\n");
    EXPECT_EQ((Line{kPlain, 10}.fill_to(2).add("ab").fill_to(3).fill_to(6).add("c").text()),
              "  ab  c\n");
    EXPECT_EQ((Line{kPlain, 10}.add("ab").fill_to(8).text()), "ab\n");
}

TEST(OverviewLine, NeverGetsWiderThanItMay)
{
    EXPECT_EQ((Line{kPlain, 8}.add("abc").add("defghi").text()), "abcde...\n");
    EXPECT_EQ((Line{kPlain, 8}.add("abc").limit(12).add("defghi").text()), "abcdefghi\n");
    EXPECT_EQ((Line{kBlocks, 5}.add("abcdef").text()), "abcd\xE2\x80\xA6\n");
    EXPECT_EQ((Line{kPlain, 3}.add("abc").add("d").columns()), 3U);
}

TEST(OverviewLine, IsPrintable)
{
    EXPECT_EQ((Line{kPlain, 20}.add("a\x1b[2J\n").text()), "a\\x1b[2J\\x0a\n");
}

TEST(OverviewLine, HasRulesBehindABlank)
{
    EXPECT_EQ((Line{kPlain, 10}.rule_to(2).add(" a").rule_to(8).text()), "-- a ---\n");
    EXPECT_EQ((Line{kBlocks, 10}.rule_to(2).text()), "\xE2\x94\x80\xE2\x94\x80\n");
}

TEST(OverviewLine, HasBarsOfPartAndRest)
{
    EXPECT_EQ((Line{kPlain, 20}.bar(1, 2, 4, Colour::kRed).text()), "##..\n");
    EXPECT_EQ((Line{kPlain, 20}.bar(0, 2, 4, Colour::kRed).text()), "....\n");
    EXPECT_EQ((Line{kPlain, 20}.bar(1, 1000, 4, Colour::kRed).text()), "#...\n");
    EXPECT_EQ((Line{kPlain, 20}.bar(999, 1000, 4, Colour::kRed).text()), "###.\n");
    EXPECT_EQ((Line{kPlain, 20}.bar(3, 2, 4, Colour::kRed).text()), "####\n");
    EXPECT_EQ((Line{kBlocks, 20}.bar(1, 2, 2, Colour::kRed).text()), "\xE2\x96\x88\xE2\x96\x91\n");
}

TEST(OverviewLine, CountsColumnsWithoutTheColours)
{
    Line line{kRich, 20};
    line.bar(1, 2, 2, Colour::kRed);
    EXPECT_EQ(line.columns(), 2U);
    line.fill_to(4).add("x", Colour::kGreen).add("", Colour::kRed);
    EXPECT_EQ(line.text(),
              "\x1b[31m\xE2\x96\x88\x1b[0m\x1b[90m\xE2\x96\x91\x1b[0m  \x1b[32mx\x1b[0m\n");
}

}  // namespace
}  // namespace nimba::smi
