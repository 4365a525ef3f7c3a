// SPDX-License-Identifier: MIT
// Sub-table lines as a driver usually prints them, and those that almost look like them.
#include "page_table_dump_fixture.hpp"
#include "support/planned_reads.hpp"

#include <stdexcept>
#include <string_view>

namespace nimba::test {
namespace {

using namespace std::string_literals;

constexpr std::string_view kUsual = "2:5 Snoop:1 Segment:2 LargePage:3 Addr:4fc4\n";

class UsualSubTableLine : public PageTableDump {
  protected:
    // What a dump of this line tells.
    Lines told_by(const std::string& line)
    {
        read_anew(line);
        EXPECT_EQ(status_, 0);
        return subs();
    }
    // What a dump tells of the usual line with `from` in it replaced by `to`.
    Lines told_with(std::string_view from, std::string_view to)
    {
        std::string line{kUsual};
        return told_by(line.replace(line.find(from), from.size(), to));
    }
};

TEST_F(UsualSubTableLine, IsTold)
{
    EXPECT_EQ(told_by(std::string{kUsual}), (Lines{"2:5 snoop=1 segment=2 large=3 addr=4fc4"}));
}

TEST_F(UsualSubTableLine, MayHaveNumbersOfAnyLength)
{
    EXPECT_EQ(told_with(":5 ", ":123456789 "),
              (Lines{"2:123456789 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_with(":5 ", ":1234567890 "),
              (Lines{"2:1234567890 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_with(":5 ", ":000000000000007 "),
              (Lines{"2:7 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_with("2:", "000000000001:"), (Lines{"1:5 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_with("Page:3", "Page:2147483647"),
              (Lines{"2:5 snoop=1 segment=2 large=2147483647 addr=4fc4"}));
    EXPECT_EQ(told_with("Snoop:1", "Snoop:999999999"),
              (Lines{"2:5 snoop=51711 segment=2 large=3 addr=4fc4"}));
}

TEST_F(UsualSubTableLine, MayHaveSignedNumbers)
{
    EXPECT_EQ(told_with(":5 ", ":-5 "), (Lines{"2:-5 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_with("Page:3", "Page:-3"), (Lines{"2:5 snoop=1 segment=2 large=-3 addr=4fc4"}));
    EXPECT_EQ(told_with("Snoop:1", "Snoop:+1"), (Lines{"2:5 snoop=1 segment=2 large=3 addr=4fc4"}));
}

TEST_F(UsualSubTableLine, MayHaveAnyLevel)
{
    EXPECT_EQ(told_with("2:", "0:"), (Lines{"0:5 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_with("2:", "1:"), (Lines{"1:5 snoop=1 segment=2 large=3 addr=4fc4"}));
    for (const char* level : {"3:", "22:", "999999999:", "2147483647:", "-1:"}) {
        EXPECT_EQ(told_with("2:", level), Lines{}) << level;
    }
}

TEST_F(UsualSubTableLine, WithANumberOutsideTheRangeIsAnError)
{
    for (const auto* with : {":2147483648 ", ":9999999999 ", ":99999999999999999999 "}) {
        EXPECT_THROW(told_with(":5 ", with), std::out_of_range) << with;
    }
    EXPECT_THROW(told_with("2:", "9999999999:"), std::out_of_range);
    EXPECT_THROW(told_with("Page:3", "Page:4294967296"), std::out_of_range);
}

TEST_F(UsualSubTableLine, WithoutANumberIsAnError)
{
    EXPECT_THROW(told_with("2:", ":"), std::invalid_argument);
    EXPECT_THROW(told_with(":5 ", ": "), std::invalid_argument);
    EXPECT_THROW(told_with("Snoop:1", "Snoop:"), std::invalid_argument);
    EXPECT_THROW(told_with("Segment:2", "Segment:"), std::invalid_argument);
    EXPECT_THROW(told_with("Page:3", "Page:"), std::invalid_argument);
    EXPECT_THROW(told_with("Page:3", "Page:x3"), std::invalid_argument);
}

TEST_F(UsualSubTableLine, MayHaveAnAddressOfAnyLengthAndKind)
{
    for (const char* address :
         {"0", "ABCDEF", "0123456789abcdef", "0123456789abcdef0", "0x4fc4", "4fg4", "4 5", "-4",
          "0123456789abcdef0123456789abcdef0123456789abcde"}) {
        EXPECT_EQ(told_with("4fc4", address),
                  (Lines{"2:5 snoop=1 segment=2 large=3 addr="s + address}));
    }
    EXPECT_EQ(told_with("4fc4", ""), (Lines{"2:5 snoop=1 segment=2 large=3"}));
    EXPECT_EQ(told_with("4fc4", "0123456789abcdef0123456789abcdef0123456789abcdef"),
              (Lines{"2:5 snoop=1 segment=2 large=3 "
                     "addr=0123456789abcdef0123456789abcdef0123456789abcde"}));
}

TEST_F(UsualSubTableLine, MayHaveTextAround)
{
    const Lines usual{"2:5 snoop=1 segment=2 large=3 addr=4fc4"};
    EXPECT_EQ(told_with("2:", "   2:"), usual);
    EXPECT_EQ(told_with("2:", "2 :"), usual);
    EXPECT_EQ(told_with(" Snoop", " x  Snoop"), usual);
    EXPECT_EQ(told_with(" Segment", "  Segment"), usual);
    EXPECT_EQ(told_with("Snoop:1 Segment:2", "Segment:2 Snoop:1"), usual);
    EXPECT_EQ(told_with("\n", " \r\n"), usual);
    EXPECT_EQ(told_with("\n", ""), usual);
    EXPECT_EQ(told_with("\n", "\0 and more\n"s), usual);
    EXPECT_EQ(told_with("4fc4", "4fc4, 5"), (Lines{usual.front() + ", 5"}));
}

TEST_F(UsualSubTableLine, IsAPageTableWithEntryInIt)
{
    EXPECT_EQ(told_with("2:5 Snoop", "0:5:entry Snoop"), Lines{});
    EXPECT_EQ(pages(), (Lines{"0:5"}));
}

TEST_F(UsualSubTableLine, MayFollowAnotherInAnyMixture)
{
    EXPECT_EQ(
        told_by("2:1 Snoop:1 Segment:2 LargePage:3 Addr:4\n"
                "2:2 Snoop:0\n"
                "2:3 Snoop:0 Segment:0 LargePage:0 Addr:0\n"
                "2:4 Snoop:0\n"),
        (Lines{"2:1 snoop=1 segment=2 large=3 addr=4 next=2.1", "2:2 large=3 pre=2.0 next=2.2",
               "2:3 addr=0 pre=2.1 next=2.3", "2:4 pre=2.2"}));
}

TEST_F(UsualSubTableLine, EndsWhereTheDumpEndsWhateverWasReadBefore)
{
    const PlannedReads reads{{.node = "/vm_info", .bytes_at_once = kUsual.size()}};
    EXPECT_EQ(told_by(std::string{kUsual} + "2:5 Snoop:1 Segment:2 LargePage:3 Addr:4"),
              (Lines{"2:5 snoop=1 segment=2 large=3 addr=4fc4 next=2.1",
                     "2:5 snoop=1 segment=2 large=3 addr=4 pre=2.0"}));
    EXPECT_GE(reads.reads(), 2);
}

TEST_F(UsualSubTableLine, IsFoundBehindACut)
{
    EXPECT_EQ(told_by(std::string(511, 'x') + std::string{kUsual}),
              (Lines{"2:5 snoop=1 segment=2 large=3 addr=4fc4"}));
    EXPECT_EQ(told_by(std::string(509, ' ') + std::string{kUsual}), Lines{});
}

}  // namespace
}  // namespace nimba::test
