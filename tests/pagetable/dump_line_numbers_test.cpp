// SPDX-License-Identifier: MIT
// The numbers in a line of a dump.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <stdexcept>
#include <string>

namespace nimba::test {
namespace {

int level_of(const std::string& text)
{
    return find_Level_in_Table(text + ":7: entry\n");
}

int page_index_of(const std::string& text)
{
    return find_Index_in_Table("0:" + text + ": entry\n");
}

int sub_index_of(const std::string& text)
{
    return find_Index_in_Table("0:" + text + " Snoop:1\n");
}

int snoop_of(const std::string& text)
{
    return find_value_in_subTable("0:1 Snoop:" + text + " Segment:1\n", "Snoop:");
}

int last_value_of(const std::string& text)
{
    return find_value_in_subTable("0:1 Snoop:" + text, "Snoop:");
}

class DumpLineNumber : public testing::TestWithParam<int (*)(const std::string&)> {};

TEST_P(DumpLineNumber, MayBeAny32BitNumber)
{
    EXPECT_EQ(GetParam()("0"), 0);
    EXPECT_EQ(GetParam()("42"), 42);
    EXPECT_EQ(GetParam()("2147483647"), INT_MAX);
    EXPECT_EQ(GetParam()("-2147483648"), INT_MIN);
}

TEST_P(DumpLineNumber, MayHaveASignAndLeadingZeros)
{
    EXPECT_EQ(GetParam()("-1"), -1);
    EXPECT_EQ(GetParam()("+7"), 7);
    EXPECT_EQ(GetParam()("-0"), 0);
    EXPECT_EQ(GetParam()("000000000000010"), 10);
}

TEST_P(DumpLineNumber, EndsBeforeTextThatIsNoDigit)
{
    EXPECT_EQ(GetParam()("7x"), 7);
    EXPECT_EQ(GetParam()("7.9"), 7);
    EXPECT_EQ(GetParam()("0x10"), 0);
    EXPECT_EQ(GetParam()("1e3"), 1);
    EXPECT_EQ(GetParam()("7\t8"), 7);
    EXPECT_EQ(GetParam()("7\n"), 7);
}

TEST_P(DumpLineNumber, MayStandBehindATab)
{
    EXPECT_EQ(GetParam()("\t7"), 7);
    EXPECT_EQ(GetParam()("\n\v\f\r7"), 7);
}

TEST_P(DumpLineNumber, OutsideThe32BitRangeIsAnError)
{
    EXPECT_THROW(GetParam()("2147483648"), std::out_of_range);
    EXPECT_THROW(GetParam()("-2147483649"), std::out_of_range);
    EXPECT_THROW(GetParam()("99999999999999999999999"), std::out_of_range);
}

TEST_P(DumpLineNumber, WithoutDigitsIsAnError)
{
    EXPECT_THROW(GetParam()(""), std::invalid_argument);
    EXPECT_THROW(GetParam()("x"), std::invalid_argument);
    EXPECT_THROW(GetParam()("-"), std::invalid_argument);
    EXPECT_THROW(GetParam()("x7"), std::invalid_argument);
    EXPECT_THROW(GetParam()("- 7"), std::invalid_argument);
}

TEST_P(DumpLineNumber, OfBlanksAloneIsAnError)
{
    EXPECT_THROW(GetParam()("   "), std::invalid_argument);
    EXPECT_THROW(GetParam()("\t"), std::invalid_argument);
}

constexpr std::array kParts = {level_of, page_index_of, sub_index_of, snoop_of, last_value_of};

std::string part_name(const testing::TestParamInfo<int (*)(const std::string&)>& info)
{
    constexpr std::array kNames = {"Level", "IndexOfAPageTable", "IndexOfASubTable", "Value",
                                   "ValueAtTheEnd"};
    return kNames.at(info.index);
}

INSTANTIATE_TEST_SUITE_P(Everywhere, DumpLineNumber, testing::ValuesIn(kParts), part_name);

TEST(DumpLineLevel, MayStandBehindBlanks)
{
    EXPECT_EQ(level_of("  2"), 2);
    EXPECT_EQ(level_of("2  "), 2);
}

TEST(DumpLineLevel, StandsBeforeTheFirstColon)
{
    EXPECT_EQ(find_Level_in_Table("1:2:3"), 1);
    EXPECT_EQ(find_Level_in_Table("12:"), 12);
    EXPECT_THROW(find_Level_in_Table(":1:2"), std::invalid_argument);
    EXPECT_THROW(find_Level_in_Table("pt 1:2: entry"), std::invalid_argument);
}

TEST(DumpLineLevel, IsMinusOneWithoutAColon)
{
    EXPECT_EQ(find_Level_in_Table(""), -1);
    EXPECT_EQ(find_Level_in_Table("   "), -1);
    EXPECT_EQ(find_Level_in_Table("2 entry\n"), -1);
}

TEST(DumpLineIndex, IsZeroWithoutAColon)
{
    EXPECT_EQ(find_Index_in_Table(""), 0);
    EXPECT_EQ(find_Index_in_Table("2 entry 7\n"), 0);
    EXPECT_EQ(find_Index_in_Table("2 Snoop 7\n"), 0);
}

TEST(DumpLineIndex, OfAPageTableMayHaveBlanksAround)
{
    EXPECT_EQ(page_index_of("  7"), 7);
    EXPECT_EQ(page_index_of("7  "), 7);
    EXPECT_EQ(page_index_of("7 8"), 7);
}

TEST(DumpLineIndex, OfAPageTableEndsAtTheSecondColonOrTheEnd)
{
    EXPECT_EQ(find_Index_in_Table("0:12:34 entry:"), 12);
    EXPECT_EQ(find_Index_in_Table("0:12 entry"), 12);
    EXPECT_THROW(find_Index_in_Table("0::12 entry"), std::invalid_argument);
    EXPECT_THROW(find_Index_in_Table("0: entry"), std::invalid_argument);
}

TEST(DumpLineIndex, OfASubTableEndsAtTheFirstBlankOrTheEnd)
{
    EXPECT_EQ(find_Index_in_Table("0:12 34 Snoop:1"), 12);
    EXPECT_EQ(find_Index_in_Table("0:12"), 12);
    EXPECT_EQ(find_Index_in_Table("0:12:34"), 12);
}

TEST(DumpLineIndex, OfASubTableIsNotThereBehindABlank)
{
    EXPECT_THROW(find_Index_in_Table("0: 12 Snoop:1"), std::invalid_argument);
}

TEST(DumpLineValue, IsZeroWithoutItsKey)
{
    EXPECT_EQ(find_value_in_subTable("", "Snoop:"), 0);
    EXPECT_EQ(find_value_in_subTable("2:1 snoop:7 Snoop 7 LargePage:7", "Snoop:"), 0);
}

TEST(DumpLineValue, IsNotThereBehindABlank)
{
    EXPECT_THROW(find_value_in_subTable("Snoop: 7", "Snoop:"), std::invalid_argument);
    EXPECT_THROW(find_value_in_subTable("Snoop:", "Snoop:"), std::invalid_argument);
}

TEST(DumpLineValue, BelongsToTheFirstOccurrenceOfItsKey)
{
    EXPECT_EQ(find_value_in_subTable("Snoop:1 Snoop:2", "Snoop:"), 1);
    EXPECT_EQ(find_value_in_subTable("NoSnoop:3 Snoop:2", "Snoop:"), 3);
}

TEST(DumpLineValue, OfAKeyOfItsOwnIsFoundAsWell)
{
    EXPECT_EQ(find_value_in_subTable("a=5 b=6", "b="), 6);
}

}  // namespace
}  // namespace nimba::test
