// SPDX-License-Identifier: MIT
// Page tables that a machine file asks for by number.
#include "driver/synthetic_tables.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace nimba::sim::test {
namespace {

std::string dump(const SyntheticTables& tables)
{
    PageTableText text;
    add_synthetic_tables(tables, text);
    return text.take();
}

SyntheticTables tables(uint64_t level0, uint64_t level1, uint64_t level2, uint64_t entries)
{
    SyntheticTables tables;
    tables.level0 = level0;
    tables.level1 = level1;
    tables.level2 = level2;
    tables.entries = entries;
    tables.segments = {0};
    return tables;
}

int count(const std::string& text, std::string_view part)
{
    int found = 0;
    for (auto place = text.find(part); place != std::string::npos;
         place = text.find(part, place + 1)) {
        ++found;
    }
    return found;
}

TEST(SyntheticTables, LieFromSixtyFourTebibytesOnEachBelowItsOwn)
{
    EXPECT_EQ(dump(tables(2, 3, 4, 5)),
              "0:128: entry addr:10000000, buffer:pt0_128\n"
              "1:65536: entry addr:10001000, buffer:pt1_65536\n"
              "2:33554432: entry addr:10002000, buffer:pt2_33554432\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:0\n"
              "0:129: entry addr:10003000, buffer:pt0_129\n"
              "1:66048: entry addr:10004000, buffer:pt1_66048\n"
              "2:33816576: entry addr:10005000, buffer:pt2_33816576\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:200000\n"
              "1:66049: entry addr:10006000, buffer:pt1_66049\n"
              "2:33817088: entry addr:10007000, buffer:pt2_33817088\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:400000\n"
              "2:33817089: entry addr:10008000, buffer:pt2_33817089\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:600000\n"
              "2:1 Snoop:0 Segment:0 LargePage:0 Addr:601000\n");
}

TEST(SyntheticTables, TablesOfUpperLevelsStandAloneWithoutTablesBelow)
{
    EXPECT_EQ(dump(tables(1, 2, 0, 0)),
              "0:128: entry addr:10000000, buffer:pt0_128\n"
              "1:65536: entry addr:10001000, buffer:pt1_65536\n"
              "1:65537: entry addr:10002000, buffer:pt1_65537\n");
    EXPECT_EQ(dump(tables(1, 0, 0, 0)), "0:128: entry addr:10000000, buffer:pt0_128\n");
}

TEST(SyntheticTables, SegmentsComeInTurnBySubTable)
{
    SyntheticTables three = tables(1, 1, 3, 6);
    three.segments = {4, 9};
    EXPECT_EQ(dump(three),
              "0:128: entry addr:10000000, buffer:pt0_128\n"
              "1:65536: entry addr:10001000, buffer:pt1_65536\n"
              "2:33554432: entry addr:10002000, buffer:pt2_33554432\n"
              "2:0 Snoop:0 Segment:4 LargePage:0 Addr:0\n"
              "2:1 Snoop:0 Segment:4 LargePage:0 Addr:1000\n"
              "2:33554433: entry addr:10003000, buffer:pt2_33554433\n"
              "2:0 Snoop:0 Segment:9 LargePage:0 Addr:200000\n"
              "2:1 Snoop:0 Segment:9 LargePage:0 Addr:201000\n"
              "2:33554434: entry addr:10004000, buffer:pt2_33554434\n"
              "2:0 Snoop:0 Segment:4 LargePage:0 Addr:400000\n"
              "2:1 Snoop:0 Segment:4 LargePage:0 Addr:401000\n");
}

TEST(SyntheticTables, PercentOfTheSubTablesHoldLargePages)
{
    SyntheticTables half = tables(1, 1, 2, 4);
    half.large_pages = 50;
    half.snooping = 50;
    EXPECT_EQ(dump(half),
              "0:128: entry addr:10000000, buffer:pt0_128\n"
              "1:65536: entry addr:10001000, buffer:pt1_65536\n"
              "2:33554432: entry addr:10002000, buffer:pt2_33554432\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:0\n"
              "2:1 Snoop:1 Segment:0 LargePage:0 Addr:1000\n"
              "2:33554433: entry addr:10003000, buffer:pt2_33554433\n"
              "2:0 Snoop:0 Segment:0 LargePage:1 Addr:200000\n"
              "2:1 Snoop:1 Segment:0 LargePage:1 Addr:210000\n");
}

TEST(SyntheticTables, NumbersAreThoseThatWereAskedFor)
{
    SyntheticTables game = tables(4, 40, 400, 20000);
    game.large_pages = 25;
    game.snooping = 10;
    const std::string text = dump(game);
    EXPECT_EQ(count(text, "buffer:pt0_"), 4);
    EXPECT_EQ(count(text, "buffer:pt1_"), 40);
    EXPECT_EQ(count(text, "buffer:pt2_"), 400);
    EXPECT_EQ(count(text, "Addr:"), 20000);
    EXPECT_EQ(count(text, "Snoop:1"), 2000);
    // 100 sub-tables with the 32 pages that fit
    EXPECT_EQ(count(text, "LargePage:1"), 3200);
}

TEST(SyntheticTables, MostEntriesAreAllPagesThatFit)
{
    EXPECT_EQ(most_entries(tables(1, 1, 10, 0)), 5120U);
    SyntheticTables large = tables(1, 1, 10, 0);
    large.large_pages = 100;
    EXPECT_EQ(most_entries(large), 320U);
    large.large_pages = 20;
    EXPECT_EQ(most_entries(large), 2U * 32 + 8U * 512);
}

TEST(SyntheticTables, FullSubTablesHaveEveryIndex)
{
    SyntheticTables full = tables(1, 1, 2, 544);
    full.large_pages = 50;
    const std::string text = dump(full);
    EXPECT_EQ(count(text, "LargePage:0"), 512);
    EXPECT_EQ(count(text, "LargePage:1"), 32);
    EXPECT_EQ(count(text, "2:511 "), 1);
    EXPECT_EQ(count(text, "2:31 "), 2);
    EXPECT_TRUE(text.ends_with("2:31 Snoop:0 Segment:0 LargePage:1 Addr:3f0000\n"));
}

}  // namespace
}  // namespace nimba::sim::test
