// SPDX-License-Identifier: MIT
// How the page-table entries of a dump are linked, and which of them are dropped.
#include "page_table_dump_fixture.hpp"

#include <initializer_list>

namespace nimba::test {
namespace {

class PageTableLinks : public PageTableDump {
  protected:
    // Reads a dump of page-table lines of these levels, whose indices count from 1.
    void read_levels(std::initializer_list<int> levels)
    {
        std::string dump;
        int index = 0;
        for (const int level : levels) {
            dump += std::to_string(level) + ':' + std::to_string(++index) + ": entry\n";
        }
        read_anew(dump);
        EXPECT_EQ(status_, 0);
    }
};

TEST_F(PageTableLinks, AreNoneBetweenEntriesOfLevelZero)
{
    read_levels({0, 0, 0});
    EXPECT_EQ(pages(), (Lines{"0:1", "0:2", "0:3"}));
}

TEST_F(PageTableLinks, LeadFromTheFirstChildToItsParentAndBack)
{
    read_levels({0, 1, 2});
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0"}));
}

TEST_F(PageTableLinks, LeadToTheLastEntryOfTheLevelAbove)
{
    read_levels({0, 0, 1, 1, 2});
    EXPECT_EQ(pages(), (Lines{"0:1", "0:2 child=1.0", "1:3 parent=0.1 next=1.1",
                              "1:4 child=2.0 pre=1.0", "2:5 parent=1.1"}));
}

TEST_F(PageTableLinks, ChainSiblingsWhichHaveNoParent)
{
    read_levels({0, 1, 1, 1});
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 next=1.1", "1:3 pre=1.0 next=1.2",
                              "1:4 pre=1.1"}));
    read_levels({0, 1, 2, 2, 2});
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0",
                              "2:3 parent=1.0 next=2.1", "2:4 pre=2.0 next=2.2", "2:5 pre=2.1"}));
}

TEST_F(PageTableLinks, ChainALevelOneEntryBehindTheTablesOfItsSibling)
{
    read_levels({0, 1, 2, 2, 1, 2});
    EXPECT_EQ(pages(),
              (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0 next=1.1", "1:5 child=2.2 pre=1.0",
                     "2:3 parent=1.0 next=2.1", "2:4 pre=2.0", "2:6 parent=1.1"}));
}

TEST_F(PageTableLinks, DoNotChainTheChildrenOfTwoRoots)
{
    read_levels({0, 1, 2, 0, 1, 2});
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "0:4 child=1.1", "1:2 parent=0.0 child=2.0",
                              "1:5 parent=0.1 child=2.1", "2:3 parent=1.0", "2:6 parent=1.1"}));
}

TEST_F(PageTableLinks, AreNoneOfALevelOneEntryBeforeAnyOther)
{
    read_levels({1});
    EXPECT_EQ(pages(), Lines{});
    read_levels({1, 0});
    EXPECT_EQ(pages(), (Lines{"0:2"}));
}

TEST_F(PageTableLinks, AreNoneOfALevelTwoEntryBeforeAnyOther)
{
    read_levels({2});
    EXPECT_EQ(pages(), Lines{});
    read_levels({2, 0, 1});
    EXPECT_EQ(pages(), (Lines{"0:2 child=1.0", "1:3 parent=0.0"}));
}

TEST_F(PageTableLinks, AreNoneOfALevelTwoEntryBehindOneOfLevelZero)
{
    read_levels({0, 2});
    EXPECT_EQ(pages(), (Lines{"0:1"}));
    read_levels({0, 1, 2, 0, 2});
    EXPECT_EQ(pages(),
              (Lines{"0:1 child=1.0", "0:4", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0"}));
}

TEST_F(PageTableLinks, ChainALevelTwoEntryBehindTheLastOneThatWasNotDropped)
{
    read_levels({0, 1, 2, 0, 2, 2, 2});
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "0:4", "1:2 parent=0.0 child=2.0",
                              "2:3 parent=1.0 next=2.1", "2:6 pre=2.0 next=2.2", "2:7 pre=2.1"}));
}

TEST_F(PageTableLinks, ChainALevelOneEntryBehindADroppedOne)
{
    read_levels({0, 1, 0, 2, 1});
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "0:3", "1:2 parent=0.0 next=1.1", "1:5 pre=1.0"}));
}

TEST_F(PageTableLinks, LeadNowhereFromAnEntryBehindDroppedOnesAlone)
{
    read_levels({1, 1});
    EXPECT_EQ(pages(), (Lines{"1:2"}));
    read_levels({2, 2, 2});
    EXPECT_EQ(pages(), (Lines{"2:2 next=2.1", "2:3 pre=2.0"}));
    read_levels({2, 1});
    EXPECT_EQ(pages(), (Lines{"1:2"}));
    read_levels({1, 2});
    EXPECT_EQ(pages(), (Lines{"2:2"}));
    read_levels({0, 2, 2});
    EXPECT_EQ(pages(), (Lines{"0:1", "2:3"}));
    read_levels({0, 2, 1, 2});
    EXPECT_EQ(pages(), (Lines{"0:1", "1:3 child=2.0", "2:4 parent=1.0"}));
}

TEST_F(PageTableLinks, AreMadeAsIfLinesOfOtherLevelsWereNotThere)
{
    for (const int other : {-1, 3, 4, 2147483647}) {
        SCOPED_TRACE(other);
        read_levels({0, other, 1, other, 2, other, 2});
        EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:3 parent=0.0 child=2.0",
                                  "2:5 parent=1.0 next=2.1", "2:7 pre=2.0"}));
        read_levels({other, 1});
        EXPECT_EQ(pages(), Lines{});
        read_levels({0, other, 2});
        EXPECT_EQ(pages(), (Lines{"0:1"}));
    }
}

TEST_F(PageTableLinks, AreMadeAsIfALineWithoutAColonWasNotThere)
{
    read("0:1: entry\nentry\n1:2: entry\nentry addr 7\n2:3: entry\n");
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0"}));
}

TEST_F(PageTableLinks, AreMadeAcrossSubTablesAndOtherLines)
{
    read(
        "0:1: entry\nother\n0:1 Snoop:0\n1:2: entry\n1:2 Snoop:0\n\n2:3: entry\n2:4 Snoop:0\n"
        "2:5: entry\n");
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0 sub=0.0", "1:2 parent=0.0 child=2.0 sub=1.0",
                              "2:3 parent=1.0 sub=2.0 next=2.1", "2:5 pre=2.0"}));
}

TEST_F(PageTableLinks, OfASecondDumpBeginAnew)
{
    read("0:1: entry\n1:2: entry\n2:3: entry\n");
    read("2:4: entry\n");
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0"}));
    read("1:5: entry\n");
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0"}));
    read("0:6: entry\n1:7: entry\n");
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "0:6 child=1.1", "1:2 parent=0.0 child=2.0",
                              "1:7 parent=0.1", "2:3 parent=1.0"}));
}

}  // namespace
}  // namespace nimba::test
