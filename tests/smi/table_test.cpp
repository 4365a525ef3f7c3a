// SPDX-License-Identifier: MIT
#include "tools/smi/text/table.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Table, IsEmptyWithoutRows)
{
    EXPECT_EQ(aligned({}), "");
}

TEST(Table, ColumnsAreAsWideAsTheirWidestCell)
{
    EXPECT_EQ(aligned({{"A", "BBB", "C"}, {"11", "2", "3"}}),
              "A   BBB  C\n"
              "11  2    3\n");
}

TEST(Table, LinesEndWithoutBlanks)
{
    EXPECT_EQ(aligned({{"A", "B", "C"}, {"1", "", "long"}, {"1", "", ""}, {"", "2", ""}}),
              "A  B  C\n"
              "1     long\n"
              "1\n"
              "   2\n");
}

TEST(Table, CellsAreMadePrintableBeforeTheyAreMeasured)
{
    EXPECT_EQ(aligned({{"\x1b", "x"}, {"\xC3\xA9\xC3\xA9", "y"}}),
              "\\x1b  x\n"
              "\xC3\xA9\xC3\xA9    y\n");
}

TEST(Table, NumbersEndAtTheSamePlace)
{
    EXPECT_EQ(
        aligned({{"A", "SIZE", "B"}, {"1", "4 KiB", "x"}, {"2", "", "y"}, {"", "12 B", ""}}, {1}),
        "A   SIZE  B\n"
        "1  4 KiB  x\n"
        "2         y\n"
        "    12 B\n");
}

TEST(GrowingTable, ColumnsKeepTheWidthOfEarlierRows)
{
    GrowingTable table{{0}};
    EXPECT_EQ(table.lines({{"N", "X"}, {"100", "a"}}),
              "  N  X\n"
              "100  a\n");
    EXPECT_EQ(table.lines({{"5", "b"}}), "  5  b\n");
    EXPECT_EQ(table.lines({{"1000", "c"}}), "1000  c\n");
    EXPECT_EQ(table.lines({{"6", "d"}}), "   6  d\n");
    EXPECT_EQ(table.lines({}), "");
}

}  // namespace
}  // namespace nimba::smi
