// SPDX-License-Identifier: MIT
#include "tools/smi/top/history.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::top {
namespace {

TEST(TopHistory, HasTheNewestAtAgeZero)
{
    History history{3};
    history.add(1);
    history.add(2);
    EXPECT_EQ(history.size(), 2U);
    EXPECT_EQ(history.at_age(0), 2);
    EXPECT_EQ(history.at_age(1), 1);
    EXPECT_EQ(history.at_age(2), std::nullopt);
}

TEST(TopHistory, ForgetsTheOldestWhenItIsFull)
{
    History history{3};
    for (const double value : {1, 2, 3, 4}) {
        history.add(value);
    }
    EXPECT_EQ(history.size(), 3U);
    EXPECT_EQ(history.at_age(0), 4);
    EXPECT_EQ(history.at_age(2), 2);
    EXPECT_EQ(history.at_age(3), std::nullopt);
}

TEST(TopHistory, KeepsAGapWhereAFigureWasMissing)
{
    History history{3};
    history.add(1);
    history.add(std::nullopt);
    history.add(0);
    EXPECT_EQ(history.at_age(0), 0);
    EXPECT_EQ(history.at_age(1), std::nullopt);
    EXPECT_EQ(history.at_age(2), 1);
}

TEST(TopHistory, TellsTheLargestOfTheNewest)
{
    History history{4};
    EXPECT_EQ(history.largest(4), std::nullopt);
    history.add(9);
    history.add(2);
    history.add(std::nullopt);
    EXPECT_EQ(history.largest(1), std::nullopt);
    EXPECT_EQ(history.largest(2), 2);
    EXPECT_EQ(history.largest(100), 9);
}

}  // namespace
}  // namespace nimba::smi::top
