// SPDX-License-Identifier: MIT
// The texts in a line of a dump, and the memory of the last page-table line's level.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <tuple>

namespace nimba::test {
namespace {

using namespace std::string_literals;

constexpr const char* kPageTableLine = "1:23: entry 0x7f addr:1a2b000, buffer:page table 1\n";
constexpr const char* kSubTableLine = "2:45 Snoop:1 Segment:2 LargePage:3 Addr:1a2c \n";

TEST(DumpLine, HasItsPartsWhereTheyStand)
{
    EXPECT_EQ(find_Level_in_Table(kPageTableLine), 1);
    EXPECT_EQ(find_Index_in_Table(kPageTableLine), 23);
    EXPECT_EQ(find_Addr_in_Table(kPageTableLine, "addr:"), "1a2b000");
    EXPECT_EQ(find_Buffer_in_Table(kPageTableLine, "buffer:"), "page table 1");
    EXPECT_EQ(find_Level_in_Table(kSubTableLine), 2);
    EXPECT_EQ(find_Index_in_Table(kSubTableLine), 45);
    EXPECT_EQ(find_value_in_subTable(kSubTableLine, "Snoop:"), 1);
    EXPECT_EQ(find_value_in_subTable(kSubTableLine, "Segment:"), 2);
    EXPECT_EQ(find_value_in_subTable(kSubTableLine, "LargePage:"), 3);
    EXPECT_EQ(find_Addr_in_Table(kSubTableLine, "Addr:"), "1a2c");
}

TEST(DumpLineAddress, OfAPageTableRunsToTheNextComma)
{
    EXPECT_EQ(find_Addr_in_Table("a, addr: 1f \t, buffer:b,c\n", "addr:"), " 1f \t");
    EXPECT_EQ(find_Addr_in_Table("addr:,", "addr:"), "");
    EXPECT_EQ(find_Addr_in_Table("addr:1,addr:2,", "addr:"), "1");
    EXPECT_EQ(find_Addr_in_Table("ptaddr:1,addr:2,", "addr:"), "1");
}

TEST(DumpLineAddress, OfAPageTableIsTheRestOfTheLineWithoutAComma)
{
    EXPECT_EQ(find_Addr_in_Table("addr:1f buffer:b \r\n", "addr:"), "1f buffer:b \r\n");
    EXPECT_EQ(find_Addr_in_Table("a,b addr:1f\n", "addr:"), "1f\n");
    EXPECT_EQ(find_Addr_in_Table("addr:", "addr:"), "");
}

TEST(DumpLineAddress, OfASubTableIsTheRestOfTheLineWithoutBlanksAtItsEnd)
{
    EXPECT_EQ(find_Addr_in_Table("Addr:1f, 20 \t\r\n \n", "Addr:"), "1f, 20");
    EXPECT_EQ(find_Addr_in_Table("Addr: \t1f\v\n", "Addr:"), " \t1f\v");
    EXPECT_EQ(find_Addr_in_Table("Addr:1f", "Addr:"), "1f");
    EXPECT_EQ(find_Addr_in_Table("Addr:", "Addr:"), "");
    EXPECT_EQ(find_Addr_in_Table("Addr: \t\r\n", "Addr:"), "");
    EXPECT_EQ(find_Addr_in_Table("Addr:1 Addr:2", "Addr:"), "1 Addr:2");
}

TEST(DumpLineAddress, IsEmptyWithoutItsKey)
{
    EXPECT_EQ(find_Addr_in_Table("", "addr:"), "");
    EXPECT_EQ(find_Addr_in_Table("Addr:1f, addr 1f,", "addr:"), "");
    EXPECT_EQ(find_Addr_in_Table("", "Addr:"), "");
    EXPECT_EQ(find_Addr_in_Table("addr:1f\n", "Addr:"), "");
}

TEST(DumpLineAddress, IsNoNumber)
{
    EXPECT_EQ(find_Addr_in_Table("addr:0xZZ, ", "addr:"), "0xZZ");
    EXPECT_EQ(find_Addr_in_Table("Addr:ffffffffffffffffffff\n", "Addr:"), "ffffffffffffffffffff");
    EXPECT_EQ(find_Addr_in_Table("Addr:a\0b\xff\n"s, "Addr:"), "a\0b\xff"s);
}

TEST(DumpLineBuffer, IsTheRestOfTheLineWithoutBlanksAtItsEnd)
{
    EXPECT_EQ(find_Buffer_in_Table("buffer: a, b \t\r\n", "buffer:"), " a, b");
    EXPECT_EQ(find_Buffer_in_Table("mybuffer:a buffer:b", "buffer:"), "a buffer:b");
    EXPECT_EQ(find_Buffer_in_Table("buffer:", "buffer:"), "");
    EXPECT_EQ(find_Buffer_in_Table("buffer: \n", "buffer:"), "");
}

TEST(DumpLineBuffer, IsEmptyWithoutItsKey)
{
    EXPECT_EQ(find_Buffer_in_Table("", "buffer:"), "");
    EXPECT_EQ(find_Buffer_in_Table("Buffer:a buffer b", "buffer:"), "");
}

TEST(DumpLineText, MayBeLong)
{
    const std::string text(100'000, 'a');
    EXPECT_EQ(find_Addr_in_Table("addr:" + text + ",", "addr:"), text);
    EXPECT_EQ(find_Addr_in_Table("Addr:" + text + "\n", "Addr:"), text);
    EXPECT_EQ(find_Buffer_in_Table("buffer:" + text + "\n", "buffer:"), text);
}

// The three flags and the result behind an update with `level`, from these flags.
std::tuple<bool, bool, bool, int> updated(bool level0, bool level1, bool level2, int level)
{
    const int result = update_PageTable_Flags(level0, level1, level2, level);
    return {level0, level1, level2, result};
}

TEST(PageTableFlags, HoldTheLastLevelAlone)
{
    for (const bool before : {false, true}) {
        EXPECT_EQ(updated(before, before, before, 0), std::tuple(true, false, false, 0));
        EXPECT_EQ(updated(before, before, before, 1), std::tuple(false, true, false, 0));
        EXPECT_EQ(updated(before, before, before, 2), std::tuple(false, false, true, 1));
    }
}

TEST(PageTableFlags, AreClearedByAnotherLevel)
{
    for (const int level : {-1, 3, INT_MIN, INT_MAX}) {
        EXPECT_EQ(updated(true, true, true, level), std::tuple(false, false, false, 0)) << level;
        EXPECT_EQ(updated(false, false, false, level), std::tuple(false, false, false, 0)) << level;
    }
}

}  // namespace
}  // namespace nimba::test
