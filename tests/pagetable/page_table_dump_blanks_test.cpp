// SPDX-License-Identifier: MIT
// Blanks where a driver usually prints none.
#include "page_table_dump_fixture.hpp"

#include <stdexcept>

namespace nimba::test {
namespace {

using namespace std::string_literals;
using BlanksInADump = PageTableDump;

TEST_F(BlanksInADump, MayStandAroundTheIndexOfAPageTable)
{
    read("0 : 17 : entry addr:1, buffer:b\n1: 2 3: entry\n");
    EXPECT_EQ(pages(), (Lines{"0:17 addr=1 buffer=b child=1.0", "1:2 parent=0.0"}));
}

TEST_F(BlanksInADump, MayNotStandBeforeTheIndexOfASubTable)
{
    EXPECT_THROW(read("0: 17 Snoop:1 Segment:2 LargePage:3 Addr:4\n"), std::invalid_argument);
}

TEST_F(BlanksInADump, NeedNotStandBeforeAKey)
{
    read("0:1 Snoop:1NoSegment:2,LargePage:3,Addr:4\n0:2: entry,addr:5,buffer:b\n");
    EXPECT_EQ(subs(), (Lines{"0:1 snoop=1 segment=2 large=3 addr=4"}));
    EXPECT_EQ(pages(), (Lines{"0:2 addr=5 buffer=b"}));
}

TEST_F(BlanksInADump, AreRemovedBehindAnAddressOfAnyLength)
{
    for (const std::size_t length : {1U, 4U, 15U, 16U, 17U}) {
        for (const std::size_t blanks : {0U, 1U, 12U, 15U, 16U, 17U}) {
            const std::string address(length, 'a');
            read_anew("2:5 Snoop:1 Segment:2 LargePage:3 Addr:" + address +
                      std::string(blanks, ' ') + "\n");
            EXPECT_EQ(subs(), (Lines{"2:5 snoop=1 segment=2 large=3 addr=" + address})) << blanks;
        }
    }
}

TEST_F(BlanksInADump, EndNoAddressBeforeItsLineEnds)
{
    read("2:5 Snoop:1 Segment:2 LargePage:3 Addr:4\n  some other 123\n2:6 Snoop:1 Addr:5\n");
    EXPECT_EQ(subs(), (Lines{"2:5 snoop=1 segment=2 large=3 addr=4 next=2.1",
                             "2:6 snoop=1 large=3 addr=5 pre=2.0"}));
    read_anew("2:5 Snoop:1 Segment:2 LargePage:3 Addr:4 5   6   7   89\n");
    EXPECT_EQ(subs(), (Lines{"2:5 snoop=1 segment=2 large=3 addr=4 5   6   7   89"}));
    read_anew("2:5 Snoop:1 Segment:2 LargePage:3 Addr:4\0 5   6   7   8\n"s);
    EXPECT_EQ(subs(), (Lines{"2:5 snoop=1 segment=2 large=3 addr=4"}));
}

}  // namespace
}  // namespace nimba::test
