// SPDX-License-Identifier: MIT
#include "tools/smi/top/layout.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace nimba::smi::top {
namespace {

const std::vector<std::size_t> kAll{0, 1, 2, 3, 4, 5, 6, 7};

std::vector<std::size_t> numbers(const Layout& layout)
{
    std::vector<std::size_t> numbers;
    for (const PlacedGauge& placed : layout.gauges) {
        numbers.push_back(placed.gauge);
    }
    return numbers;
}

TEST(TopLayout, HasTwoBandsOfFourGaugesOnAUsualTerminal)
{
    const Layout places = layout({80, 24}, kAll);
    EXPECT_EQ(places.description, 1);
    EXPECT_EQ(places.event, 22);
    EXPECT_EQ(places.keys, 23);
    EXPECT_TRUE(places.framed_table);
    EXPECT_EQ(places.gauges, (std::vector<PlacedGauge>{{0, {0, 2, 20, 6}},
                                                       {1, {20, 2, 20, 6}},
                                                       {2, {40, 2, 20, 6}},
                                                       {3, {60, 2, 20, 6}},
                                                       {4, {0, 8, 20, 6}},
                                                       {5, {20, 8, 20, 6}},
                                                       {6, {40, 8, 20, 6}},
                                                       {7, {60, 8, 20, 6}}}));
    EXPECT_EQ(places.table, (Area{0, 14, 80, 8}));
}

TEST(TopLayout, ShowsTheMostWantedOnTheSmallestScreen)
{
    const Layout places = layout({40, 10}, kAll);
    EXPECT_EQ(places.description, std::nullopt);
    EXPECT_EQ(places.event, std::nullopt);
    EXPECT_EQ(places.keys, 9);
    EXPECT_FALSE(places.framed_table);
    EXPECT_EQ(places.gauges, (std::vector<PlacedGauge>{{0, {0, 1, 20, 4}}, {4, {20, 1, 20, 4}}}));
    EXPECT_EQ(places.table, (Area{0, 5, 40, 4}));
}

TEST(TopLayout, LeavesOutThoseOfTheHighestRanks)
{
    EXPECT_EQ(numbers(layout({40, 24}, kAll)), (std::vector<std::size_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(numbers(layout({80, 12}, kAll)), (std::vector<std::size_t>{0, 3, 4, 5}));
}

TEST(TopLayout, SharesTheWidthAmongFewGauges)
{
    const std::vector<std::size_t> engines{0, 1, 2};
    const Layout places = layout({100, 30}, engines);
    EXPECT_EQ(places.gauges, (std::vector<PlacedGauge>{
                                 {0, {0, 2, 33, 15}}, {1, {33, 2, 33, 15}}, {2, {66, 2, 34, 15}}}));
    EXPECT_EQ(places.table, (Area{0, 17, 100, 11}));
}

TEST(TopLayout, GivesTheTableEverythingWithoutGauges)
{
    const Layout places = layout({80, 24}, {});
    EXPECT_TRUE(places.gauges.empty());
    EXPECT_EQ(places.table, (Area{0, 2, 80, 20}));
}

TEST(TopLayout, FillsAHugeScreen)
{
    const Layout places = layout({400, 200}, kAll);
    EXPECT_EQ(places.gauges.size(), 8U);
    EXPECT_EQ(places.gauges.back(), (PlacedGauge{7, {300, 60, 100, 58}}));
    EXPECT_EQ(places.table, (Area{0, 118, 400, 80}));
}

TEST(TopLayout, KnowsWhatIsTooSmall)
{
    EXPECT_FALSE(is_too_small({40, 10}));
    EXPECT_TRUE(is_too_small({39, 10}));
    EXPECT_TRUE(is_too_small({40, 9}));
}

}  // namespace
}  // namespace nimba::smi::top
