// SPDX-License-Identifier: MIT
// How the sub-table entries of a dump are linked, and what they keep of each other.
#include "page_table_dump_fixture.hpp"

#include <utility>

namespace nimba::test {
namespace {

using SubTableLinks = PageTableDump;

// A device whose three levels have one page-table entry each, "0:1", "1:2" and "2:3".
constexpr const char* kThreeLevels = "0:1: entry\n1:2: entry\n2:3: entry\n";

TEST_F(SubTableLinks, LeadFromTheFirstOfARunToItsOwnerAndBack)
{
    read("0:1: entry\n1:2: entry\n1:0 Snoop:0\n1:1 Snoop:0\n1:2 Snoop:0\n");
    EXPECT_EQ(pages(), (Lines{"0:1 child=1.0", "1:2 parent=0.0 sub=1.0"}));
    EXPECT_EQ(subs(), (Lines{"1:0 parent=1.0 next=1.1", "1:1 pre=1.0 next=1.2", "1:2 pre=1.1"}));
}

TEST_F(SubTableLinks, LeadToTheLastPageTableOfTheirOwnLevel)
{
    for (const auto& [line, expected] : {std::pair{"0:7 Snoop:0\n", "0:7 parent=0.0"},
                                         std::pair{"1:7 Snoop:0\n", "1:7 parent=1.0"},
                                         std::pair{"2:7 Snoop:0\n", "2:7 parent=2.0"}}) {
        read_anew(kThreeLevels + std::string{line});
        EXPECT_EQ(subs(), (Lines{expected}));
    }
    EXPECT_EQ(pages(),
              (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0 sub=2.0"}));
}

TEST_F(SubTableLinks, DoNotChainTwoRuns)
{
    read(
        "0:1: entry\n1:2: entry\n2:3: entry\n2:0 Snoop:0\n2:1 Snoop:0\n"
        "2:4: entry\n2:0 Snoop:1\n2:1 Snoop:1\n");
    EXPECT_EQ(pages(2), (Lines{"2:3 parent=1.0 sub=2.0 next=2.1", "2:4 sub=2.2 pre=2.0"}));
    EXPECT_EQ(subs(), (Lines{"2:0 parent=2.0 next=2.1", "2:1 pre=2.0",
                             "2:0 snoop=1 parent=2.1 next=2.3", "2:1 snoop=1 pre=2.2"}));
}

TEST_F(SubTableLinks, ChainAcrossLinesThatAreSkipped)
{
    read("0:1: entry\n0:1 Snoop:0\nother\n\n0:2 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"0:1 parent=0.0 next=0.1", "0:2 pre=0.0"}));
}

TEST_F(SubTableLinks, HaveNoOwnerOnceTheLevelChangesWithinARun)
{
    read(kThreeLevels + std::string{"2:0 Snoop:0\n1:0 Snoop:0\n2:1 Snoop:0\n1:1 Snoop:0\n"});
    EXPECT_EQ(pages(),
              (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0 sub=2.0"}));
    EXPECT_EQ(subs(),
              (Lines{"1:0 next=1.1", "1:1 pre=1.0", "2:0 parent=2.0 next=2.1", "2:1 pre=2.0"}));
}

TEST_F(SubTableLinks, ChainBehindAnEarlierRunOnceTheLevelChanges)
{
    read("0:1: entry\n0:0 Snoop:0\n0:2: entry\n1:3: entry\n1:0 Snoop:0\n0:1 Snoop:0\n");
    EXPECT_EQ(pages(), (Lines{"0:1 sub=0.0", "0:2 child=1.0", "1:3 parent=0.1 sub=1.0"}));
    EXPECT_EQ(subs(), (Lines{"0:0 parent=0.0 next=0.1", "0:1 pre=0.0", "1:0 parent=1.0"}));
}

TEST_F(SubTableLinks, HaveNoOwnerInALevelWithoutPageTables)
{
    read("2:0 Snoop:0\n2:1 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"2:0 next=2.1", "2:1 pre=2.0"}));
    read_anew("0:1: entry\n1:0 Snoop:0\n");
    EXPECT_EQ(pages(), (Lines{"0:1"}));
    EXPECT_EQ(subs(), (Lines{"1:0"}));
}

TEST_F(SubTableLinks, BeginARunBehindADroppedPageTable)
{
    read("0:1: entry\n0:0 Snoop:0\n2:2: entry\n0:1 Snoop:0\n2:0 Snoop:0\n");
    EXPECT_EQ(pages(), (Lines{"0:1 sub=0.1"}));
    EXPECT_EQ(subs(), (Lines{"0:0 parent=0.0", "0:1 parent=0.0", "2:0"}));
}

TEST_F(SubTableLinks, BeginARunBehindAPageTableOfAnotherLevel)
{
    for (const std::string other : {"3:9: entry\n", "-1:9: entry\n", "entry\n"}) {
        SCOPED_TRACE(other);
        read_anew("0:1: entry\n0:0 Snoop:0\n" + other + "0:1 Snoop:0\n0:2 Snoop:0\n");
        EXPECT_EQ(pages(), (Lines{"0:1 sub=0.1"}));
        EXPECT_EQ(subs(), (Lines{"0:0 parent=0.0", "0:1 parent=0.0 next=0.2", "0:2 pre=0.1"}));
    }
}

TEST_F(SubTableLinks, BelongToARunThatASubTableOfAnotherLevelBegan)
{
    for (const std::string other : {"3:9 Snoop:0\n", "-1:9 Snoop:0\n", "Snoop\n"}) {
        SCOPED_TRACE(other);
        read_anew("0:1: entry\n" + other + "0:1 Snoop:0\n0:2 Snoop:0\n");
        EXPECT_EQ(pages(), (Lines{"0:1"}));
        EXPECT_EQ(subs(), (Lines{"0:1 next=0.1", "0:2 pre=0.0"}));
    }
}

TEST_F(SubTableLinks, AreNotBrokenByASubTableOfAnotherLevel)
{
    read("0:1: entry\n0:1 Snoop:0\n3:9 Snoop:0\n0:2 Snoop:0\n");
    EXPECT_EQ(pages(), (Lines{"0:1 sub=0.0"}));
    EXPECT_EQ(subs(), (Lines{"0:1 parent=0.0 next=0.1", "0:2 pre=0.0"}));
}

TEST_F(SubTableLinks, OfASecondDumpBeginAnew)
{
    read("0:1: entry\n0:1 Snoop:0\n");
    read("0:2 Snoop:0\n0:3 Snoop:0\n");
    EXPECT_EQ(pages(), (Lines{"0:1 sub=0.1"}));
    EXPECT_EQ(subs(), (Lines{"0:1 parent=0.0", "0:2 parent=0.0 next=0.2", "0:3 pre=0.1"}));
}

using LargePages = PageTableDump;

TEST_F(LargePages, AreThoseOfTheLineBeforeWithoutTheirKey)
{
    read(
        "0:1 Snoop:0\n0:2 Snoop:0 LargePage:5\n0:3 Snoop:0\n0:4 Snoop:0\n"
        "0:5 Snoop:0 LargePage:0\n0:6 Snoop:0\n");
    EXPECT_EQ(subs(),
              (Lines{"0:1 next=0.1", "0:2 large=5 pre=0.0 next=0.2", "0:3 large=5 pre=0.1 next=0.3",
                     "0:4 large=5 pre=0.2 next=0.4", "0:5 pre=0.3 next=0.5", "0:6 pre=0.4"}));
}

TEST_F(LargePages, AreThoseOfTheLineBeforeInAnyLevelAndRun)
{
    read(
        "0:1: entry\n0:1 Snoop:0 LargePage:5\n1:2: entry\n1:2 Snoop:0\n7:9 Snoop:0 LargePage:6\n"
        "2:3 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"0:1 large=5 parent=0.0", "1:2 large=5 parent=1.0", "2:3 large=6"}));
}

TEST_F(LargePages, AreKeptAcrossALineOfAnotherLevelWithoutThem)
{
    read("0:1 Snoop:0 LargePage:5\n7:9 Snoop:0\n0:2 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"0:1 large=5 next=0.1", "0:2 large=5 pre=0.0"}));
}

TEST_F(LargePages, AreZeroWithTheKeyButNoColon)
{
    read("0:1 Snoop:0 LargePage:5\n0:2 Snoop:0 LargePage 6\n0:3 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"0:1 large=5 next=0.1", "0:2 pre=0.0 next=0.2", "0:3 pre=0.1"}));
}

TEST_F(LargePages, AreNotThoseOfAPageTable)
{
    read("0:1: entry LargePage:7\n0:1 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"0:1 parent=0.0"}));
}

TEST_F(LargePages, OfASecondDumpBeginAtZero)
{
    read("0:1 Snoop:0 LargePage:5\n");
    read("0:2 Snoop:0\n");
    EXPECT_EQ(subs(), (Lines{"0:1 large=5", "0:2"}));
}

using SnoopsAndSegments = PageTableDump;

TEST_F(SnoopsAndSegments, AreZeroWithoutTheirKeysWhateverTheLineBeforeHad)
{
    read("0:1 Snoop:5 Segment:6 Addr:7\n0:2 Snoop\n");
    EXPECT_EQ(subs(), (Lines{"0:1 snoop=5 segment=6 addr=7 next=0.1", "0:2 pre=0.0"}));
}

}  // namespace
}  // namespace nimba::test
