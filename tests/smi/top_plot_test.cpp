// SPDX-License-Identifier: MIT
#include "tools/smi/top/plot.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <optional>

namespace nimba::smi::top {
namespace {

using Rows = std::vector<std::u32string>;

History history_of(std::initializer_list<std::optional<double>> values)
{
    History history{100};
    for (const auto& value : values) {
        history.add(value);
    }
    return history;
}

TEST(TopPlot, PutsTwoSamplesIntoABrailleCharacterAndTheNewestAtTheRight)
{
    EXPECT_EQ(plot(history_of({0, 25, 50, 75, 100, 100}), 100, {3, 1}, Marks::kBraille),
              (Rows{U"⣀⣴⣿"}));
}

TEST(TopPlot, FillsTheRowsBelowAHeight)
{
    EXPECT_EQ(plot(history_of({50, 100}), 100, {1, 2}, Marks::kBraille), (Rows{U"⢸", U"⣿"}));
    EXPECT_EQ(plot(history_of({50, 100}), 100, {2, 2}, Marks::kBlocks), (Rows{U" █", U"██"}));
    EXPECT_EQ(plot(history_of({50, 100}), 100, {2, 2}, Marks::kAscii), (Rows{U" |", U"||"}));
}

TEST(TopPlot, HasEightHeightsOfBlocksAndThreeOfAscii)
{
    EXPECT_EQ(plot(history_of({10, 20, 30, 40, 50, 60, 70, 80}), 80, {8, 1}, Marks::kBlocks),
              (Rows{U"▁▂▃▄▅▆▇█"}));
    EXPECT_EQ(plot(history_of({1, 2, 3}), 3, {3, 1}, Marks::kAscii), (Rows{U".:|"}));
}

TEST(TopPlot, TellsZeroFromAGap)
{
    EXPECT_EQ(plot(history_of({0, std::nullopt}), 100, {1, 1}, Marks::kBraille), (Rows{U"⡀"}));
    EXPECT_EQ(plot(history_of({std::nullopt, 0}), 100, {1, 1}, Marks::kBraille), (Rows{U"⢀"}));
    EXPECT_EQ(plot(history_of({0, std::nullopt, 0}), 100, {3, 1}, Marks::kBlocks), (Rows{U"▁ ▁"}));
    EXPECT_EQ(plot(history_of({0, std::nullopt, 0}), 100, {3, 1}, Marks::kAscii), (Rows{U". ."}));
}

TEST(TopPlot, IsEmptyBeforeTheOldestSample)
{
    EXPECT_EQ(plot(history_of({100}), 100, {3, 1}, Marks::kBraille), (Rows{U"  ⢸"}));
    EXPECT_EQ(plot(history_of({}), 100, {3, 2}, Marks::kBlocks), (Rows{U"   ", U"   "}));
}

TEST(TopPlot, KeepsWhatIsBeyondTheScaleAtItsBorder)
{
    EXPECT_EQ(plot(history_of({-5, 500}), 100, {2, 1}, Marks::kBlocks), (Rows{U"▁█"}));
}

TEST(TopPlot, EndsAnOpenScaleAtARoundNumber)
{
    EXPECT_EQ(scale_end(0), 10);
    EXPECT_EQ(scale_end(10), 10);
    EXPECT_EQ(scale_end(11), 20);
    EXPECT_EQ(scale_end(96), 100);
    EXPECT_EQ(scale_end(120), 200);
    EXPECT_EQ(scale_end(201), 300);
    EXPECT_EQ(scale_end(301), 500);
    EXPECT_EQ(scale_end(501), 1000);
    EXPECT_EQ(scale_end(1'000'000), 1'000'000);
}

}  // namespace
}  // namespace nimba::smi::top
