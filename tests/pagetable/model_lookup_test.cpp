// SPDX-License-Identifier: MIT
// Finding a sub-table entry by the page number of its table.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

vidmm_vm_pt page_table(const char* address, vidmm_vm_pte_elt3k* entries = nullptr)
{
    vidmm_vm_pt entry{};
    std::strcpy(entry.Addr, address);
    entry.PT_sub_entries = entries;
    return entry;
}

vidmm_vm_pte_elt3k sub_table_entry(std::int32_t index, const char* address)
{
    vidmm_vm_pte_elt3k entry{};
    std::strcpy(entry.Addr, address);
    entry.Index = index;
    return entry;
}

// A sub-table of the entries 17 "a17", 18 "first18", 18 "second18" and -1 "minus".
class SubTableLookup : public testing::Test {
  protected:
    SubTableLookup()
    {
        for (std::size_t i = 0; i + 1 < entries_.size(); ++i) {
            entries_[i].next = &entries_[i + 1];
            entries_[i + 1].pre = &entries_[i];
        }
    }

    // The address of the level-2 entry that an address text leads to: "" when it finds nothing.
    std::string found(const std::string& address)
    {
        return Find_SubTable_2_node(17, &device_, address).Addr;
    }

    std::vector<vidmm_vm_pte_elt3k> entries_{
        sub_table_entry(17, "a17"), sub_table_entry(18, "first18"), sub_table_entry(18, "second18"),
        sub_table_entry(-1, "minus")};
    data_vectors device_{};
};

void expect_all_zero(const vidmm_vm_pte_elt3k& entry)
{
    EXPECT_EQ(entry.Snoop, 0);
    EXPECT_EQ(entry.Segment, 0);
    EXPECT_STREQ(entry.Addr, "");
    EXPECT_EQ(entry.LargePage, 0);
    EXPECT_EQ(entry.ST_Level, 0);
    EXPECT_EQ(entry.Index, 0);
    EXPECT_EQ(entry.next, nullptr);
    EXPECT_EQ(entry.pre, nullptr);
    EXPECT_EQ(entry.parent, nullptr);
    EXPECT_EQ(entry.found, 0);
    EXPECT_EQ(entry.parent_level, 0);
    EXPECT_EQ(entry.parent_index, 0);
}

TEST_F(SubTableLookup, CopiesTheEntryAndMarksTheCopy)
{
    device_.pt_level2 = {page_table("10002000", entries_.data())};
    entries_[1].Snoop = 1;
    entries_[1].Segment = 2;
    entries_[1].LargePage = 3;
    entries_[1].ST_Level = 2;
    entries_[1].parent = device_.pt_level2.data();
    entries_[1].parent_level = 4;
    entries_[1].parent_index = 5;
    const vidmm_vm_pte_elt3k copy = Find_SubTable_2_node(18, &device_, "0x10002");
    EXPECT_EQ(copy.found, 1);
    EXPECT_EQ(copy.Index, 18);
    EXPECT_EQ(copy.Snoop, 1);
    EXPECT_EQ(copy.Segment, 2);
    EXPECT_STREQ(copy.Addr, "first18");
    EXPECT_EQ(copy.LargePage, 3);
    EXPECT_EQ(copy.ST_Level, 2);
    EXPECT_EQ(copy.next, &entries_[2]);
    EXPECT_EQ(copy.pre, entries_.data());
    EXPECT_EQ(copy.parent, device_.pt_level2.data());
    EXPECT_EQ(copy.parent_level, 4);
    EXPECT_EQ(copy.parent_index, 5);
    EXPECT_EQ(entries_[1].found, 0);
}

TEST_F(SubTableLookup, FindsTheLastEntryOfTheSubTable)
{
    device_.pt_level2 = {page_table("10002000", entries_.data())};
    EXPECT_STREQ(Find_SubTable_2_node(-1, &device_, "0x10002").Addr, "minus");
}

TEST_F(SubTableLookup, OfAnotherIndexFindsNothing)
{
    device_.pt_level2 = {page_table("10002000", entries_.data())};
    expect_all_zero(Find_SubTable_2_node(19, &device_, "0x10002"));
    expect_all_zero(Find_SubTable_2_node(0, &device_, "0x10002"));
}

TEST_F(SubTableLookup, OfAPageTableWithoutASubTableFindsNothing)
{
    device_.pt_level2 = {page_table("10002000")};
    expect_all_zero(Find_SubTable_2_node(17, &device_, "0x10002"));
}

TEST_F(SubTableLookup, InADeviceWithoutPageTablesFindsNothing)
{
    expect_all_zero(Find_SubTable_2_node(17, &device_, "0x10002"));
    EXPECT_EQ(Find_SubTable_1_addr(17, &device_, "0x10002"), "");
    EXPECT_EQ(Find_SubTable_0_addr(17, &device_, "0x10002"), "");
}

TEST_F(SubTableLookup, TakesTheFirstPageTableWithTheAddress)
{
    std::vector<vidmm_vm_pte_elt3k> other{sub_table_entry(17, "other"),
                                          sub_table_entry(20, "other20")};
    other[0].next = &other[1];
    device_.pt_level2 = {page_table("10001000", other.data()),
                         page_table("10002000", entries_.data()),
                         page_table("10002000", other.data())};
    EXPECT_EQ(found("0x10002"), "a17");
    expect_all_zero(Find_SubTable_2_node(20, &device_, "0x10002"));
}

TEST_F(SubTableLookup, IsNotHelpedByALaterPageTableWhenTheFirstHasNoSubTable)
{
    device_.pt_level2 = {page_table("10002000"), page_table("10002000", entries_.data())};
    expect_all_zero(Find_SubTable_2_node(17, &device_, "0x10002"));
}

TEST_F(SubTableLookup, TakesAwayTwoCharactersWhateverTheyAre)
{
    device_.pt_level2 = {page_table("10002000", entries_.data())};
    EXPECT_EQ(found("0X10002"), "a17");
    EXPECT_EQ(found("zz10002"), "a17");
    EXPECT_EQ(found("10002"), "");
    EXPECT_EQ(found("0x010002"), "");
}

TEST_F(SubTableLookup, ComparesTheWholeTextAsItStands)
{
    device_.pt_level2 = {page_table("abc000", entries_.data())};
    EXPECT_EQ(found("0xabc"), "a17");
    EXPECT_EQ(found("0xABC"), "");
    EXPECT_EQ(found("0xab"), "");
    EXPECT_EQ(found("0xabc0"), "");
    EXPECT_EQ(found("0xabc "), "");
    EXPECT_EQ(found(std::string{"0xabc\0", 6}), "");
}

TEST_F(SubTableLookup, OfATextOfTwoCharactersFindsThreeZeros)
{
    device_.pt_level2 = {page_table("000", entries_.data())};
    EXPECT_EQ(found("0x"), "a17");
    EXPECT_EQ(found("0"), "");
}

TEST_F(SubTableLookup, OfATextOfOneCharacterFindsTwoZeros)
{
    device_.pt_level2 = {page_table("00", entries_.data())};
    EXPECT_EQ(found("7"), "a17");
    EXPECT_EQ(found("7x"), "");
}

TEST_F(SubTableLookup, OfAnEmptyTextFindsNothing)
{
    device_.pt_level0 = {page_table("0", entries_.data()), page_table("", entries_.data())};
    device_.pt_level1 = device_.pt_level0;
    device_.pt_level2 = device_.pt_level0;
    expect_all_zero(Find_SubTable_2_node(17, &device_, ""));
    EXPECT_EQ(Find_SubTable_1_addr(17, &device_, ""), "");
    EXPECT_EQ(Find_SubTable_0_addr(17, &device_, ""), "");
}

TEST_F(SubTableLookup, FindsTheLongestAddressAndNoLongerOne)
{
    const std::string longest(47, '0');
    device_.pt_level2 = {page_table(longest.c_str(), entries_.data())};
    EXPECT_EQ(found("0x" + std::string(44, '0')), "a17");
    EXPECT_EQ(found("0x" + std::string(45, '0')), "");
}

TEST_F(SubTableLookup, SearchesItsOwnLevelAlone)
{
    std::vector<vidmm_vm_pte_elt3k> level0{sub_table_entry(17, "level 0")};
    std::vector<vidmm_vm_pte_elt3k> level1{sub_table_entry(17, "level 1")};
    device_.pt_level0 = {page_table("1000", level0.data()), page_table("a000", level0.data())};
    device_.pt_level1 = {page_table("1000", level1.data()), page_table("b000", level1.data())};
    device_.pt_level2 = {page_table("1000", entries_.data()), page_table("c000", entries_.data())};
    EXPECT_EQ(found("0x1"), "a17");
    EXPECT_EQ(found("0xa"), "");
    EXPECT_EQ(found("0xb"), "");
    EXPECT_EQ(found("0xc"), "a17");
    EXPECT_EQ(Find_SubTable_1_addr(17, &device_, "0x1"), "level 1");
    EXPECT_EQ(Find_SubTable_1_addr(17, &device_, "0xa"), "");
    EXPECT_EQ(Find_SubTable_1_addr(17, &device_, "0xb"), "level 1");
    EXPECT_EQ(Find_SubTable_1_addr(17, &device_, "0xc"), "");
    EXPECT_EQ(Find_SubTable_0_addr(17, &device_, "0x1"), "level 0");
    EXPECT_EQ(Find_SubTable_0_addr(17, &device_, "0xa"), "level 0");
    EXPECT_EQ(Find_SubTable_0_addr(17, &device_, "0xb"), "");
    EXPECT_EQ(Find_SubTable_0_addr(17, &device_, "0xc"), "");
}

TEST_F(SubTableLookup, OfTheOtherLevelsTellsTheAddressOfTheFirstEntryWithTheIndex)
{
    device_.pt_level0 = {page_table("1000"), page_table("2000", entries_.data())};
    device_.pt_level1 = device_.pt_level0;
    for (const auto find : {&Find_SubTable_0_addr, &Find_SubTable_1_addr}) {
        EXPECT_EQ(find(18, &device_, "0x2"), "first18");
        EXPECT_EQ(find(-1, &device_, "0x2"), "minus");
        EXPECT_EQ(find(19, &device_, "0x2"), "");
        EXPECT_EQ(find(17, &device_, "0x1"), "");
        EXPECT_EQ(find(17, &device_, "2"), "");
    }
}

}  // namespace
}  // namespace nimba::test
