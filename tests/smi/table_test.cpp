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

}  // namespace
}  // namespace nimba::smi
