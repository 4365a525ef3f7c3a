// SPDX-License-Identifier: MIT
// The dump of the page tables that map memory, line by line.
#include "driver/mapped_tables.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

std::string dump(const std::vector<PageRun>& runs, uint64_t most_entries = kMostMappedEntries)
{
    PageTableText text;
    add_mapped_tables(runs, text, most_entries);
    return text.take();
}

TEST(MappedTables, NothingMappedIsNoLine)
{
    EXPECT_EQ(dump({}), "");
}

TEST(MappedTables, PageOfFourKibibytesHasATableOfEachLevel)
{
    // 0x1_00201000
    EXPECT_EQ(dump({{0x100201, 0x100202, 0x1a2b3000, 7, true}}),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:4: entry addr:10001000, buffer:pt1_4\n"
              "2:2049: entry addr:10002000, buffer:pt2_2049\n"
              "2:1 Snoop:1 Segment:7 LargePage:0 Addr:1a2b3000\n");
}

TEST(MappedTables, SubTableWhoseMemoryFitsSixtyFourKibibytesHasLargePages)
{
    EXPECT_EQ(dump({{0x10, 0x30, 0x400000, 1, false}, {0x1f0, 0x200, 0x500000, 2, true}}),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "2:0: entry addr:10002000, buffer:pt2_0\n"
              "2:1 Snoop:0 Segment:1 LargePage:1 Addr:400000\n"
              "2:2 Snoop:0 Segment:1 LargePage:1 Addr:410000\n"
              "2:31 Snoop:1 Segment:2 LargePage:1 Addr:500000\n");
}

TEST(MappedTables, OneSmallPageMakesAllPagesOfItsSubTableSmall)
{
    std::string expected =
        "0:0: entry addr:10000000, buffer:pt0_0\n"
        "1:0: entry addr:10001000, buffer:pt1_0\n"
        "2:0: entry addr:10002000, buffer:pt2_0\n"
        "2:0 Snoop:0 Segment:1 LargePage:0 Addr:400000\n"
        "2:1 Snoop:0 Segment:1 LargePage:0 Addr:401000\n"
        "2:2 Snoop:0 Segment:1 LargePage:0 Addr:402000\n"
        "2:3 Snoop:0 Segment:1 LargePage:0 Addr:403000\n"
        "2:4 Snoop:0 Segment:1 LargePage:0 Addr:404000\n"
        "2:5 Snoop:0 Segment:1 LargePage:0 Addr:405000\n"
        "2:6 Snoop:0 Segment:1 LargePage:0 Addr:406000\n"
        "2:7 Snoop:0 Segment:1 LargePage:0 Addr:407000\n"
        "2:8 Snoop:0 Segment:1 LargePage:0 Addr:408000\n"
        "2:9 Snoop:0 Segment:1 LargePage:0 Addr:409000\n"
        "2:10 Snoop:0 Segment:1 LargePage:0 Addr:40a000\n"
        "2:11 Snoop:0 Segment:1 LargePage:0 Addr:40b000\n"
        "2:12 Snoop:0 Segment:1 LargePage:0 Addr:40c000\n"
        "2:13 Snoop:0 Segment:1 LargePage:0 Addr:40d000\n"
        "2:14 Snoop:0 Segment:1 LargePage:0 Addr:40e000\n"
        "2:15 Snoop:0 Segment:1 LargePage:0 Addr:40f000\n"
        "2:511 Snoop:0 Segment:2 LargePage:0 Addr:500000\n"
        "2:1: entry addr:10003000, buffer:pt2_1\n"
        "2:0 Snoop:0 Segment:3 LargePage:1 Addr:600000\n";
    EXPECT_EQ(dump({{0, 0x10, 0x400000, 1, false},
                    {0x1ff, 0x200, 0x500000, 2, false},
                    {0x200, 0x210, 0x600000, 3, false}}),
              expected);
}

TEST(MappedTables, WholeTwoMebibytesAreOneEntryOfLevelOneBeforeTheTablesOfLevelTwo)
{
    EXPECT_EQ(dump({{0x1f0, 0x610, 0x10000, 5, true}}),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "1:1 Snoop:1 Segment:5 LargePage:1 Addr:20000\n"
              "1:2 Snoop:1 Segment:5 LargePage:1 Addr:220000\n"
              "2:0: entry addr:10002000, buffer:pt2_0\n"
              "2:31 Snoop:1 Segment:5 LargePage:1 Addr:10000\n"
              "2:3: entry addr:10003000, buffer:pt2_3\n"
              "2:0 Snoop:1 Segment:5 LargePage:1 Addr:420000\n");
}

TEST(MappedTables, TwoRunsThatFillTwoMebibytesTogetherHaveASubTable)
{
    const std::string text =
        dump({{0x200, 0x300, 0x0, 1, false}, {0x300, 0x400, 0x200000, 2, false}});
    EXPECT_EQ(text.substr(0, text.find("2:1 ")),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "2:1: entry addr:10002000, buffer:pt2_1\n"
              "2:0 Snoop:0 Segment:1 LargePage:1 Addr:0\n");
    EXPECT_EQ(std::ranges::count(text, '\n'), 3 + 32);
}

TEST(MappedTables, IndicesOfTablesCountFromTheBeginningOfTheAddressSpace)
{
    // 0x8000000000 and the last page of 48 bits
    EXPECT_EQ(
        dump({{0x8000000, 0x8000001, 0, 0, false}, {0xfffffffff, 0x1000000000, 0x1000, 0, false}}),
        "0:1: entry addr:10000000, buffer:pt0_1\n"
        "1:512: entry addr:10001000, buffer:pt1_512\n"
        "2:262144: entry addr:10002000, buffer:pt2_262144\n"
        "2:0 Snoop:0 Segment:0 LargePage:0 Addr:0\n"
        "0:511: entry addr:10003000, buffer:pt0_511\n"
        "1:262143: entry addr:10004000, buffer:pt1_262143\n"
        "2:134217727: entry addr:10005000, buffer:pt2_134217727\n"
        "2:511 Snoop:0 Segment:0 LargePage:0 Addr:1000\n");
}

TEST(MappedTables, RunAcrossGibibytesGoesOnInTheNextTableOfLevelOne)
{
    EXPECT_EQ(dump({{0x3fe00, 0x40200, 0x200000, 0, false}}),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "1:511 Snoop:0 Segment:0 LargePage:1 Addr:200000\n"
              "1:1: entry addr:10002000, buffer:pt1_1\n"
              "1:0 Snoop:0 Segment:0 LargePage:1 Addr:400000\n");
}

TEST(MappedTables, PhysicalAddressesStayBelowTwoGibibytesAndAreThoseOfPages)
{
    EXPECT_EQ(dump({{0, 2, 0x7ffff123, 0, false}, {9, 10, 0x1ffffffff8765000, 0, false}}),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "2:0: entry addr:10002000, buffer:pt2_0\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:7ffff000\n"
              "2:1 Snoop:0 Segment:0 LargePage:0 Addr:0\n"
              "2:9 Snoop:0 Segment:0 LargePage:0 Addr:78765000\n");
}

TEST(MappedTables, DumpEndsBehindTheMostEntries)
{
    EXPECT_EQ(dump({{0x1ff, 0x602, 0, 0, false}}, 3),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "1:1 Snoop:0 Segment:0 LargePage:1 Addr:1000\n"
              "1:2 Snoop:0 Segment:0 LargePage:1 Addr:201000\n"
              "2:0: entry addr:10002000, buffer:pt2_0\n"
              "2:511 Snoop:0 Segment:0 LargePage:0 Addr:0\n");
}

TEST(MappedTables, HugeMemoryEndsBehindAMillionEntriesToo)
{
    const std::string text = dump({{0, uint64_t{1} << 35U, 0, 0, false}});
    // 1048576 entries of 2 MiB, 512 in each of 2048 tables of level 1, 512 of these in each of 4.
    EXPECT_EQ(std::ranges::count(text, '\n'), 1048576 + 2048 + 4);
}

TEST(PageTableText, AddressesOfTablesBeginAgainAtTheEndOfTwoGibibytes)
{
    PageTableText text;
    for (int table = 0; table < 458752; ++table) {
        text.add_table(2, 0);
    }
    const std::string filled = text.take();
    EXPECT_TRUE(filled.ends_with("2:0: entry addr:7ffff000, buffer:pt2_0\n"));
    text.add_table(2, 1);
    EXPECT_EQ(text.take(), "2:1: entry addr:10000000, buffer:pt2_1\n");
}

}  // namespace
}  // namespace nimba::sim::test
