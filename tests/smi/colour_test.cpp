// SPDX-License-Identifier: MIT
#include "tools/smi/text/colour.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Colour, IsWantedOnATerminalAlone)
{
    EXPECT_TRUE(is_colour_wanted({true, nullptr, "xterm"}));
    EXPECT_FALSE(is_colour_wanted({false, nullptr, "xterm"}));
}

TEST(Colour, IsRefusedByNoColorUnlessItIsEmpty)
{
    EXPECT_FALSE(is_colour_wanted({true, "1", "xterm"}));
    EXPECT_FALSE(is_colour_wanted({true, "0", "xterm"}));
    EXPECT_TRUE(is_colour_wanted({true, "", "xterm"}));
}

TEST(Colour, IsNotForATerminalThatCannotShowIt)
{
    EXPECT_FALSE(is_colour_wanted({true, nullptr, "dumb"}));
    EXPECT_TRUE(is_colour_wanted({true, nullptr, nullptr}));
}

TEST(Colour, StandsAroundTheText)
{
    EXPECT_EQ(coloured("FAIL", Colour::kRed, true), "\x1b[31mFAIL\x1b[0m");
    EXPECT_EQ(coloured("ok", Colour::kGreen, true), "\x1b[32mok\x1b[0m");
    EXPECT_EQ(coloured("note", Colour::kYellow, true), "\x1b[33mnote\x1b[0m");
    EXPECT_EQ(coloured("-", Colour::kGrey, true), "\x1b[90m-\x1b[0m");
}

TEST(Colour, LeavesTheTextBareWhenNoneIsWanted)
{
    EXPECT_EQ(coloured("FAIL", Colour::kRed, false), "FAIL");
    EXPECT_EQ(coloured("plain", Colour::kNone, true), "plain");
}

}  // namespace
}  // namespace nimba::smi
