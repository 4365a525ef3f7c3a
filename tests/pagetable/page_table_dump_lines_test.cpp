// SPDX-License-Identifier: MIT
// Where the lines of a dump begin and end.
#include "page_table_dump_fixture.hpp"

namespace nimba::test {
namespace {

using namespace std::string_literals;
using DumpLines = PageTableDump;

TEST_F(DumpLines, MayEndWithCarriageReturns)
{
    read(
        "0:1: entry addr:1, buffer:b\r\n0:2 Snoop:1 Segment:2 LargePage:3 Addr:4\r\n"
        "0:3 Snoop:1\r\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=1 buffer=b sub=0.0"}));
    EXPECT_EQ(subs(0), (Lines{"0:2 snoop=1 segment=2 large=3 addr=4 parent=0.0 next=0.1",
                              "0:3 snoop=1 large=3 pre=0.0"}));
}

TEST_F(DumpLines, AreNotEndedByACarriageReturnAlone)
{
    read("0:1: entry addr:1, buffer:b\r0:2: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=1 buffer=b\r0:2: entry"}));
}

TEST_F(DumpLines, MayLackTheirNewlineAtTheEnd)
{
    read("0:1: entry\n0:2: entry addr:1, buffer:b");
    EXPECT_EQ(pages(0), (Lines{"0:1", "0:2 addr=1 buffer=b"}));
    read_anew("0:1 Snoop:7");
    EXPECT_EQ(subs(0), (Lines{"0:1 snoop=7"}));
}

TEST_F(DumpLines, MayBeEmpty)
{
    read("\n\n0:1: entry\n\n\n0:2: entry\n\n");
    EXPECT_EQ(pages(0), (Lines{"0:1", "0:2"}));
}

TEST_F(DumpLines, EndAtANulByte)
{
    read(
        "0:1: entry addr:1, buffer:b\0c\n0:2: entry\0 addr:1, buffer:b\n0:3: en\0try\n"
        "\0000:4: entry\n0:5 Snoop:1 Addr:4\0005 LargePage:6\n"s);
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=1 buffer=b", "0:2 sub=0.0"}));
    EXPECT_EQ(subs(0), (Lines{"0:5 snoop=1 addr=4 parent=0.1"}));
}

TEST_F(DumpLines, MayHold511Bytes)
{
    const std::string line = "0:1: entry addr:1, buffer:b";
    const std::string blanks(510 - line.size(), ' ');
    read(line + blanks + "\n0:2: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=1 buffer=b", "0:2"}));
    read_anew(" " + blanks + line + "\n0:2: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=1 buffer=b", "0:2"}));
}

TEST_F(DumpLines, AreCutAt511Bytes)
{
    const std::string line = "0:1: entry addr:1, buffer:";
    read(line + std::string(511 - line.size() - 3, ' ') + "abcdef\n");
    EXPECT_EQ(pages(0).size(), 1);
    EXPECT_STREQ(device_.pt_level0.at(0).Buffer, std::string(47, ' ').c_str());
    const std::string sub_line = "0:1 Snoop:";
    read_anew(sub_line + std::string(511 - sub_line.size() - 3, '0') + "456789\n");
    EXPECT_EQ(subs(0), (Lines{"0:1 snoop=456"}));
}

TEST_F(DumpLines, AreLinesOfTheirOwnBehindACut)
{
    read(std::string(511, 'x') + "0:1: entry\n" + std::string(1'022, 'x') + "0:2: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1", "0:2"}));
    read_anew("0:1: entry" + std::string(501, ' ') + "0:2: entry" + std::string(501, ' ') +
              "0:3 Snoop:0\n");
    EXPECT_EQ(pages(0), (Lines{"0:1", "0:2 sub=0.0"}));
    EXPECT_EQ(subs(0), (Lines{"0:3 parent=0.1"}));
}

TEST_F(DumpLines, AreNotOfAKindWhoseWordIsCut)
{
    read("0:1:" + std::string(504, ' ') + "entry\n");
    EXPECT_EQ(pages(), Lines{});
    read_anew("0:1:" + std::string(502, ' ') + "entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1"}));
    read_anew("0:1 " + std::string(503, ' ') + "Snoop\n");
    EXPECT_EQ(subs(), Lines{});
}

TEST_F(DumpLines, Of511BytesAreFollowedByALineWithTheNewlineAlone)
{
    read(std::string(511, 'x') + "\n0:1: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1"}));
}

TEST_F(DumpLines, CountTheBytesBehindANul)
{
    read("0:1: entry\0"s + std::string(500, 'x') + "0:2: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:1", "0:2"}));
}

TEST_F(DumpLines, MayBeVeryLong)
{
    read(std::string(1'000'000, 'x') + "\n0:1: entry\n");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(pages(0), (Lines{"0:1"}));
}

TEST_F(DumpLines, AreFoundAcrossAnyBoundaryOfABuffer)
{
    for (std::size_t padding = 4'060; padding < 4'110; ++padding) {
        read_anew(std::string(padding, '\n') + "0:1: entry addr:12, buffer:b\n0:2: entry\n");
        ASSERT_EQ(pages(0), (Lines{"0:1 addr=12 buffer=b", "0:2"})) << padding;
    }
}

}  // namespace
}  // namespace nimba::test
