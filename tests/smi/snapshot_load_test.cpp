// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/load.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Load, OfMemoryAndEnginesIsHighFromSeventyAndCriticalFromNinetyPerCentOn)
{
    EXPECT_EQ(load_of_percent(0), Load::kUsual);
    EXPECT_EQ(load_of_percent(69), Load::kUsual);
    EXPECT_EQ(load_of_percent(70), Load::kHigh);
    EXPECT_EQ(load_of_percent(89), Load::kHigh);
    EXPECT_EQ(load_of_percent(90), Load::kCritical);
}

TEST(Load, OfTheTemperatureIsHighFromSeventyAndCriticalFromEightyFiveDegreesOn)
{
    EXPECT_EQ(load_of_temperature(-5), Load::kUsual);
    EXPECT_EQ(load_of_temperature(69), Load::kUsual);
    EXPECT_EQ(load_of_temperature(70), Load::kHigh);
    EXPECT_EQ(load_of_temperature(84), Load::kHigh);
    EXPECT_EQ(load_of_temperature(85), Load::kCritical);
}

}  // namespace
}  // namespace nimba::smi
