// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/address_space.hpp"

#include "page_table_spaces.hpp"
#include "tools/smi/pagetable/number.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

constexpr PageKind kSmall{12, 0, false};

TEST(DriverNumber, IsAllOfTheTextOrNothing)
{
    EXPECT_EQ(decimal_in("4100001"), 4100001);
    EXPECT_EQ(decimal_in("-1"), -1);
    EXPECT_EQ(decimal_in(""), std::nullopt);
    EXPECT_EQ(decimal_in("12x"), std::nullopt);
    EXPECT_EQ(decimal_in("99999999999999999999"), std::nullopt);
    EXPECT_EQ(hexadecimal_in("1a2B3000"), 0x1a2b3000U);
    EXPECT_EQ(hexadecimal_in("0xffffffffffffffff"), UINT64_MAX);
    EXPECT_EQ(hexadecimal_in("10000000000000000"), std::nullopt);
    EXPECT_EQ(hexadecimal_in("0000000000001000"), 0x1000U);
    EXPECT_EQ(hexadecimal_in("00000000000001000"), std::nullopt);  // may have been cut
    EXPECT_EQ(hexadecimal_in("0x"), std::nullopt);
    EXPECT_EQ(hexadecimal_in("-1"), std::nullopt);
}

TEST(AddressSpace, JoinsLikePagesThatFollowEachOther)
{
    const auto space = viewer({page(2048, 0, "1a2b3000"), page(2048, 1, "1a2b4000"),
                               page(2048, 2, "1a2b5000", 1), page(2048, 3, "1a2b6000", 1, 1),
                               page(2048, 5, "1a2b7000", 1, 1), page(2048, 6, "20000000", 1, 1)})
                           .space;
    const std::vector<PageRun> expected{
        {2, 2048, 0, 0x100000000, 2, kSmall, 0x1a2b3000},
        {2, 2048, 2, 0x100002000, 1, {12, 1, false}, 0x1a2b5000},
        {2, 2048, 3, 0x100003000, 1, {12, 1, true}, 0x1a2b6000},
        {2, 2048, 5, 0x100005000, 1, {12, 1, true}, 0x1a2b7000},
        {2, 2048, 6, 0x100006000, 1, {12, 1, true}, 0x20000000},
    };
    EXPECT_EQ(space.runs, expected);
    EXPECT_EQ(space.odd, Oddities{});
}

TEST(AddressSpace, PlacesPagesBelowEveryLevel)
{
    const PageRecord huge{0, 3, 0, 0, 1, 0, 2, "40000000"};
    const PageRecord big{1, 1, 1, 4, 1, 0, 0, "200000"};
    const PageRecord large{2, 1, 2, 2048, 1, 0, 0, "10000"};
    const auto space = viewer({huge, big, large}).space;
    const std::vector<PageRun> expected{
        {0, 0, 3, 0xc0000000, 1, {30, 2, false}, 0x40000000},
        {2, 2048, 1, 0x100010000, 1, {16, 0, false}, 0x10000},
        {1, 4, 1, 0x100200000, 1, {21, 0, false}, 0x200000},
    };
    EXPECT_EQ(space.runs, expected);
    EXPECT_EQ(runs_of(space, space.tables[0][0]), std::vector{expected[0]});
    EXPECT_EQ(runs_of(space, space.tables[1][0]), std::vector{expected[2]});
    EXPECT_EQ(runs_of(space, space.tables[2][0]), std::vector{expected[1]});
}

TEST(AddressSpace, KeepsTheTextOfAnAddressThatIsNoNumber)
{
    const auto space = viewer({page(2048, 0, "nowhere"), page(2048, 1, "")}).space;
    ASSERT_EQ(space.runs.size(), 2U);
    EXPECT_EQ(space.runs[0].physical, std::nullopt);
    EXPECT_EQ(space.unreadable,
              (std::map<uint64_t, std::string>{{0x100000000, "nowhere"}, {0x100001000, ""}}));
}

TEST(AddressSpace, CountsEntriesOutsideAndLeavesThemOut)
{
    const auto space =
        space_with({table(0, 0), table(0, -1), table(0, 512), table(7, 0)},
                   {PageRecord{0, 0, 0, 0, 1, 0, 0, "0"}, PageRecord{0, 512, 0, 0, 1, 0, 0, "0"},
                    PageRecord{0, -5, 0, 0, 1, 0, 0, "0"}, PageRecord{2, 0, 1, 0, 0, 0, 0, "0"}});
    EXPECT_EQ(space.odd, (Oddities{6, 0, 0}));
    EXPECT_EQ(space.runs.size(), 1U);
    EXPECT_EQ(space.tables[0].size(), 1U);
}

TEST(AddressSpace, CountsEntriesWithoutTheTableAboveThem)
{
    const auto space = space_with({table(0, 0), table(1, 512), table(2, 262144), table(2, 5)},
                                  {page(262144, 0, "0"), page(262144, 1, "1000"), page(9, 0, "0")});
    EXPECT_EQ(space.odd, (Oddities{0, 6, 0}));
    EXPECT_TRUE(space.runs.empty());
    EXPECT_TRUE(space.tables[1].empty());
    EXPECT_TRUE(space.tables[2].empty());
}

TEST(AddressSpace, KeepsTheFirstOfWhatOverlaps)
{
    const PageRecord big{1, 0, 1, 4, 1, 0, 0, "40000000"};
    const auto space =
        space_with({table(0, 0), table(1, 4), table(1, 4, "99"), table(2, 2048), table(2, 2049)},
                   {big, page(2048, 511, "1000"), page(2049, 0, "2000"), page(2049, 1, "3000"),
                    page(2049, 1, "7000")});
    const std::vector<PageRun> expected{{1, 4, 0, 0x100000000, 1, {21, 0, false}, 0x40000000},
                                        {2, 2049, 0, 0x100200000, 2, kSmall, 0x2000}};
    EXPECT_EQ(space.runs, expected);
    EXPECT_EQ(space.odd, (Oddities{0, 0, 3}));
    EXPECT_EQ(space.tables[1].front().address, "10000000");
}

TEST(AddressSpace, TakesThePagesOfARunThatAreFree)
{
    // The second sub-table run begins at a page that is mapped already.
    const auto space = space_with(
        {table(0, 0), table(1, 0), table(2, 0)},
        {page(0, 3, "9000"), page(0, 2, "2000"), page(0, 3, "3000"), page(0, 4, "4000")});
    const std::vector<PageRun> expected{{2, 0, 2, 0x2000, 3, kSmall, 0x2000}};
    EXPECT_EQ(space.runs, expected);
    EXPECT_EQ(space.odd, (Oddities{0, 0, 1}));
}

TEST(AddressSpace, FindsTheTablesBelowATable)
{
    const auto space =
        space_with({table(0, 0), table(0, 1), table(1, 511), table(1, 512), table(1, 5)}, {});
    const auto below = tables_below(space, space.tables[0][0]);
    ASSERT_EQ(below.size(), 2U);
    EXPECT_EQ(below[0].index, 5U);
    EXPECT_EQ(below[1].index, 511U);
    EXPECT_EQ(tables_below(space, space.tables[0][1]).size(), 1U);
    EXPECT_TRUE(tables_below(space, below[0]).empty());
    EXPECT_TRUE(tables_below(space, {2, 0, {0, 0x200000}, "", ""}).empty());
}

TEST(VmAllocation, NeedsAnAddressAndASize)
{
    EXPECT_EQ(allocation_of({"1", "a1", "100000000", "40000"}),
              (VmAllocation{"a1", {0x100000000, 0x100040000}}));
    EXPECT_EQ(allocation_of({"1", "a1", "", "40000"}), std::nullopt);
    EXPECT_EQ(allocation_of({"1", "a1", "100000000", "many"}), std::nullopt);
    EXPECT_EQ(allocation_of({"1", "a1", "ffffffffffffffff", "1"}), std::nullopt);
}

TEST(ProcessTitle, TellsAddressSpacesOfOneProcessApart)
{
    const std::vector<VmDevice> all{
        {3, "7", "maze", {}, {}}, {4, "8", "", {}, {}}, {6, "7", "maze", {}, {}}};
    EXPECT_EQ(process_title(all[0], all), "process 7 (maze), address space 1 of 2");
    EXPECT_EQ(process_title(all[1], all), "process 8");
    EXPECT_EQ(process_title(all[2], all), "process 7 (maze), address space 2 of 2");
}

TEST(Oddities, AreARemarkEach)
{
    EXPECT_TRUE(oddity_problems("process 7", {}).empty());
    const auto problems = oddity_problems("process 7", {3, 1, 2});
    ASSERT_EQ(problems.size(), 3U);
    EXPECT_EQ(problems[0].status, ExitStatus::kOk);
    EXPECT_EQ(problems[0].message,
              "process 7: 3 entries lie outside the address space (see --split)");
    EXPECT_EQ(problems[1].message,
              "process 7: 1 entry belongs to a page-table entry that is not there (see --split)");
    EXPECT_EQ(problems[2].message,
              "process 7: 2 entries are for addresses that other entries are for (see --split)");
}

}  // namespace
}  // namespace nimba::smi
