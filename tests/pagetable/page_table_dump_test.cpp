// SPDX-License-Identifier: MIT
// What a dump tells of each entry.
#include "page_table_dump_fixture.hpp"

#include <stdexcept>
#include <utility>

namespace nimba::test {
namespace {

TEST_F(PageTableDump, HasTheEntriesOfASmallAddressSpace)
{
    read(
        "VM 0x1234 of process 7\n"
        "0:0: entry 0x1 addr:1000, buffer:root\n"
        "1:4: entry 0x2 addr:2000, buffer:directory\n"
        "2:9: entry 0x3 addr:3000, buffer:table\n"
        "2:511 Snoop:1 Segment:2 LargePage:0 Addr:44\n"
        "2:512 Snoop:0 Segment:3 LargePage:1 Addr:45\n"
        "\n"
        "end\n");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(pages(0), (Lines{"0:0 addr=1000 buffer=root child=1.0"}));
    EXPECT_EQ(pages(1), (Lines{"1:4 addr=2000 buffer=directory parent=0.0 child=2.0"}));
    EXPECT_EQ(pages(2), (Lines{"2:9 addr=3000 buffer=table parent=1.0 sub=2.0"}));
    EXPECT_EQ(subs(0), Lines{});
    EXPECT_EQ(subs(1), Lines{});
    EXPECT_EQ(subs(2), (Lines{"2:511 snoop=1 segment=2 addr=44 parent=2.0 next=2.1",
                              "2:512 segment=3 large=1 addr=45 pre=2.0"}));
}

TEST_F(PageTableDump, MayBeEmpty)
{
    read("");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(pages(), Lines{});
    EXPECT_EQ(subs(), Lines{});
}

TEST_F(PageTableDump, HasOtherLinesSkippedWhateverTheyHold)
{
    read("0:x: Entry addr:1, buffer:b\nno number: snoop:y\n::::\n\n \n9999999999999:1:\n");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(pages(), Lines{});
    EXPECT_EQ(subs(), Lines{});
}

TEST_F(PageTableDump, ThatIsMissingFailsSilently)
{
    read();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(pages(), Lines{});
    EXPECT_EQ(subs(), Lines{});
}

TEST_F(PageTableDump, LeavesTheProcessAsItIs)
{
    std::snprintf(device_.pid, sizeof device_.pid, "4711");
    std::snprintf(device_.app_name, sizeof device_.app_name, "app");
    device_.note = "note";
    read("0:0: entry addr:1000, buffer:root\n0:1 Snoop:1\n");
    EXPECT_STREQ(device_.pid, "4711");
    EXPECT_STREQ(device_.app_name, "app");
    EXPECT_EQ(device_.note, "note");
}

TEST_F(PageTableDump, KnowsAPageTableByEntryAnywhereInTheLine)
{
    read("0:1: addr:1, buffer:entry\n0:2:entry\n0:3: 2 entry, Snoop:x\n0:4: subentry addr:2,\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=1 buffer=entry", "0:2", "0:3", "0:4 addr=2"}));
    EXPECT_EQ(subs(), Lines{});
}

TEST_F(PageTableDump, KnowsASubTableBySnoopAnywhereInTheLine)
{
    read("1:1 Snooped\n1:2 NoSnoop:3\n1:3 Addr:Snoop\n");
    EXPECT_EQ(pages(), Lines{});
    EXPECT_EQ(subs(1),
              (Lines{"1:1 next=1.1", "1:2 snoop=3 pre=1.0 next=1.2", "1:3 addr=Snoop pre=1.1"}));
}

TEST_F(PageTableDump, LeavesEmptyWhatALineLacks)
{
    read("0:1: entry\n0:2 Snoop\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 sub=0.0"}));
    EXPECT_EQ(subs(0), (Lines{"0:2 parent=0.0"}));
}

TEST_F(PageTableDump, TakesAddressesOfTheTwoKindsByTheirOwnKeys)
{
    read("0:1: entry Addr:1, buffer:b\n0:2 Snoop:0 addr:2\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 buffer=b sub=0.0"}));
    EXPECT_EQ(subs(0), (Lines{"0:2 parent=0.0"}));
}

TEST_F(PageTableDump, KeepsTheRestOfALineWithoutACommaAsTheAddress)
{
    read("0:1: entry addr:12 \r\n");
    EXPECT_EQ(pages(0), (Lines{"0:1 addr=12 \r\n"}));
}

TEST_F(PageTableDump, CutsTextsTo47Bytes)
{
    for (const auto& [length, kept] : {std::pair{46, 46}, {47, 47}, {48, 47}, {200, 47}}) {
        SCOPED_TRACE(length);
        const std::string text(static_cast<std::size_t>(length), '7');
        const std::string cut(static_cast<std::size_t>(kept), '7');
        read_anew("0:1: entry addr:" + text + ", buffer:" + text + "\n0:2 Snoop:0 Addr:" + text +
                  "\n");
        EXPECT_EQ(pages(0), (Lines{"0:1 addr=" + cut + " buffer=" + cut + " sub=0.0"}));
        EXPECT_EQ(subs(0), (Lines{"0:2 addr=" + cut + " parent=0.0"}));
    }
}

TEST_F(PageTableDump, KeepsTheLow16BitsOfSnoopAndSegmentAndAllOfLargePage)
{
    read(
        "0:1 Snoop:65535 Segment:65536 LargePage:65536\n"
        "0:2 Snoop:-1 Segment:65538 LargePage:2147483647\n"
        "0:3 Snoop:2147483647 Segment:-2147483648 LargePage:-5\n");
    EXPECT_EQ(subs(0), (Lines{"0:1 snoop=65535 large=65536 next=0.1",
                              "0:2 snoop=65535 segment=2 large=2147483647 pre=0.0 next=0.2",
                              "0:3 snoop=65535 large=-5 pre=0.1"}));
}

TEST_F(PageTableDump, MayHaveAnyIndex)
{
    read("0:2147483647: entry\n0:-2147483648 Snoop:0\n0:-1: entry\n");
    EXPECT_EQ(pages(0), (Lines{"0:2147483647 sub=0.0", "0:-1"}));
    EXPECT_EQ(subs(0), (Lines{"0:-2147483648 parent=0.0"}));
}

TEST_F(PageTableDump, ReadsLevelsBehindBlanks)
{
    read("0:1: entry\n    1:2: entry\n        2:3: entry\n            2:4 Snoop:1\n");
    EXPECT_EQ(pages(),
              (Lines{"0:1 child=1.0", "1:2 parent=0.0 child=2.0", "2:3 parent=1.0 sub=2.0"}));
    EXPECT_EQ(subs(2), (Lines{"2:4 snoop=1 parent=2.0"}));
}

TEST_F(PageTableDump, HasAllEntriesOfItsLinesInOrder)
{
    std::string dump;
    Lines expected;
    for (int index = 0; index < 50; ++index) {
        dump += "0:" + std::to_string(index * 3) + ": entry\n";
        expected.push_back("0:" + std::to_string(index * 3));
    }
    read(dump);
    EXPECT_EQ(pages(0), expected);
}

TEST_F(PageTableDump, LetsErrorsOfNumbersThrough)
{
    for (const char* line :
         {"x:1: entry", ":1: entry", "0:x: entry", "0:: entry", "0: entry", "x:1 Snoop:1",
          "0:x Snoop:1", "0: 1 Snoop:1", "0:1 Snoop:x", "0:1 Snoop:", "0:1 Snoop: 1",
          "0:1 Snoop:1 Segment:x", "0:1 Snoop:1 Segment: 1", "0:1 Snoop:1 LargePage:x",
          "0:1 Snoop:1 LargePage:", "entry: ", "Snoop:"}) {
        EXPECT_THROW(read_anew(std::string{line} + "\n"), std::invalid_argument) << line;
    }
    for (const char* line :
         {"2147483648:1: entry", "0:2147483648: entry", "-2147483649:1 Snoop:1",
          "0:2147483648 Snoop:1", "0:1 Snoop:2147483648", "0:1 Snoop:1 Segment:-2147483649",
          "0:1 Snoop:1 LargePage:99999999999"}) {
        EXPECT_THROW(read_anew(std::string{line} + "\n"), std::out_of_range) << line;
    }
}

TEST_F(PageTableDump, ReadsANumberOfEveryLineWhateverItsLevel)
{
    EXPECT_THROW(read_anew("7:x: entry\n"), std::invalid_argument);
    EXPECT_THROW(read_anew("7:1 Snoop:x\n"), std::invalid_argument);
    EXPECT_THROW(read_anew("7:1 Snoop:1 Segment:x\n"), std::invalid_argument);
    EXPECT_THROW(read_anew("7:1 Snoop:1 LargePage:x\n"), std::invalid_argument);
    EXPECT_THROW(read_anew("1:x: entry\n"), std::invalid_argument);
    EXPECT_THROW(read_anew("2:2147483648: entry\n"), std::out_of_range);
}

TEST_F(PageTableDump, ReadsTheLevelBeforeTheIndexAndThatBeforeTheValues)
{
    EXPECT_THROW(read_anew("x:2147483648: entry\n"), std::invalid_argument);
    EXPECT_THROW(read_anew("2147483648:x: entry\n"), std::out_of_range);
    EXPECT_THROW(read_anew("2147483648:x Snoop:x\n"), std::out_of_range);
    EXPECT_THROW(read_anew("0:2147483648 Snoop:x Segment:x\n"), std::out_of_range);
    EXPECT_THROW(read_anew("0:x Snoop:2147483648\n"), std::invalid_argument);
}

}  // namespace
}  // namespace nimba::test
