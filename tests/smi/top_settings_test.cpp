// SPDX-License-Identifier: MIT
#include "tools/smi/top/settings.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::top {
namespace {

using namespace std::chrono_literals;

TEST(TopSettings, IntervalChangesInStepsFromATenthToAMinute)
{
    Settings settings;
    lengthen_interval(settings);
    EXPECT_EQ(settings.interval, 2s);
    for (int i = 0; i < 10; ++i) {
        lengthen_interval(settings);
    }
    EXPECT_EQ(settings.interval, 60s);
    for (int i = 0; i < 20; ++i) {
        shorten_interval(settings);
    }
    EXPECT_EQ(settings.interval, 100ms);
}

TEST(TopSettings, OddIntervalGoesToTheNextStep)
{
    Settings settings{700ms};
    shorten_interval(settings);
    EXPECT_EQ(settings.interval, 500ms);
    settings.interval = 700ms;
    lengthen_interval(settings);
    EXPECT_EQ(settings.interval, 1s);
    settings.interval = 90s;
    lengthen_interval(settings);
    EXPECT_EQ(settings.interval, 90s);
    shorten_interval(settings);
    EXPECT_EQ(settings.interval, 60s);
}

TEST(TopSettings, MarksComeInTurnUnlessOnlyAsciiIsPossible)
{
    Settings settings;
    take_next_marks(settings);
    EXPECT_EQ(settings.marks, Marks::kBlocks);
    take_next_marks(settings);
    EXPECT_EQ(settings.marks, Marks::kAscii);
    take_next_marks(settings);
    EXPECT_EQ(settings.marks, Marks::kBraille);
    Settings ascii{1s, Marks::kAscii, true};
    take_next_marks(ascii);
    EXPECT_EQ(ascii.marks, Marks::kAscii);
}

}  // namespace
}  // namespace nimba::smi::top
