// SPDX-License-Identifier: MIT
#include "tools/smi/top/process_table.hpp"
#include "top_snapshots.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace nimba::smi::top {
namespace {

using Devices = std::vector<uint32_t>;

Devices devices(const ProcessTable& table)
{
    Devices numbers;
    for (const ProcessRow& row : table.rows()) {
        numbers.push_back(row.device);
    }
    return numbers;
}

std::vector<ProcessRow> rows()
{
    return process_rows(std::vector{first_adapter()});
}

ProcessTable table()
{
    ProcessTable table;
    table.show(rows());
    return table;
}

TEST(TopProcessTable, TellsTheShareOfTheAdaptersMemory)
{
    const auto all = process_rows(std::vector{first_adapter(), second_adapter()});
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[0].share, 0.25);
    EXPECT_EQ(all[0].pids, "4100003");
    EXPECT_EQ(all[0].names, "/usr/games/maze");
    EXPECT_EQ(all[3].slot, 1);
    EXPECT_EQ(all[3].share, std::nullopt);
}

TEST(TopProcessTable, MakesHostileNamesPrintable)
{
    AdapterState state = first_adapter();
    state.processes.devices = {device(0, 1, 7, "a\x1b[2Jb", 1, 1)};
    EXPECT_EQ(process_rows({&state, 1}).front().names, "a\\x1b[2Jb");
}

TEST(TopProcessTable, HasTheLargestFirst)
{
    EXPECT_EQ(devices(table()), (Devices{0x12, 0x11, 0x13}));
}

TEST(TopProcessTable, SortsByEveryKeyInBothDirections)
{
    ProcessTable sorted = table();
    sorted.sort({SortKey::kMemory, false});
    EXPECT_EQ(devices(sorted), (Devices{0x13, 0x11, 0x12}));
    sorted.sort({SortKey::kPid, false});
    EXPECT_EQ(devices(sorted), (Devices{0x11, 0x13, 0x12}));
    sorted.sort({SortKey::kDevice, true});
    EXPECT_EQ(devices(sorted), (Devices{0x13, 0x12, 0x11}));
    sorted.sort({SortKey::kAllocations, true});
    EXPECT_EQ(devices(sorted), (Devices{0x11, 0x13, 0x12}));
    sorted.sort({SortKey::kProcess, false});
    EXPECT_EQ(devices(sorted), (Devices{0x13, 0x11, 0x12}));
    sorted.show(process_rows(std::vector{first_adapter(), second_adapter()}));
    sorted.sort({SortKey::kGpu, true});
    EXPECT_EQ(devices(sorted), (Devices{0x21, 0x12, 0x11, 0x13}));
}

TEST(TopProcessTable, KnowsInWhichDirectionAKeyIsWanted)
{
    EXPECT_EQ(natural_order(SortKey::kMemory), (SortOrder{SortKey::kMemory, true}));
    EXPECT_EQ(natural_order(SortKey::kAllocations), (SortOrder{SortKey::kAllocations, true}));
    EXPECT_EQ(natural_order(SortKey::kPid), (SortOrder{SortKey::kPid, false}));
    EXPECT_EQ(natural_order(SortKey::kProcess), (SortOrder{SortKey::kProcess, false}));
}

TEST(TopProcessTable, FiltersByNameInLettersOfAnyCase)
{
    ProcessTable filtered = table();
    filtered.filter("bRo");
    EXPECT_EQ(devices(filtered), (Devices{0x13}));
    EXPECT_EQ(filtered.hidden(), 2U);
    filtered.filter("/usr");
    EXPECT_EQ(devices(filtered), (Devices{0x12, 0x11, 0x13}));
    filtered.filter("no such");
    EXPECT_EQ(devices(filtered), (Devices{}));
    filtered.filter("");
    EXPECT_EQ(filtered.hidden(), 0U);
}

TEST(TopProcessTable, FiltersByPid)
{
    ProcessTable filtered = table();
    filtered.filter("00003");
    EXPECT_EQ(devices(filtered), (Devices{0x12}));
}

TEST(TopProcessTable, FiltersWhatComesLater)
{
    ProcessTable filtered = table();
    filtered.filter("cad");
    filtered.show(process_rows(std::vector{first_adapter(), second_adapter()}));
    EXPECT_EQ(devices(filtered), (Devices{0x21}));
}

TEST(TopProcessTable, KeepsTheChosenRowWhenTheOrderChanges)
{
    ProcessTable chosen = table();
    chosen.move(1);
    EXPECT_EQ(chosen.chosen(), 1U);
    chosen.sort({SortKey::kPid, false});
    EXPECT_EQ(chosen.chosen(), 0U);
    AdapterState state = first_adapter();
    std::swap(state.processes.devices[0], state.processes.devices[1]);
    state.processes.devices[0].usage.bytes = 5'000'000'000;
    chosen.show(process_rows({&state, 1}));
    EXPECT_EQ(chosen.rows()[chosen.chosen()].device, 0x11U);
}

TEST(TopProcessTable, ChoosesTheRowInThePlaceOfOneThatWent)
{
    ProcessTable chosen = table();
    chosen.move(2);
    auto fewer = rows();
    fewer.pop_back();
    chosen.show(fewer);
    EXPECT_EQ(chosen.chosen(), 1U);
    chosen.show({});
    EXPECT_EQ(chosen.chosen(), 0U);
    chosen.show(rows());
    EXPECT_EQ(chosen.chosen(), 0U);
}

TEST(TopProcessTable, StaysWithinTheRows)
{
    constexpr auto kFar = std::numeric_limits<std::ptrdiff_t>::max() / 2;
    ProcessTable moved = table();
    moved.move(kFar);
    EXPECT_EQ(moved.chosen(), 2U);
    moved.move(-kFar);
    EXPECT_EQ(moved.chosen(), 0U);
    moved.show({});
    moved.move(1);
    EXPECT_EQ(moved.chosen(), 0U);
}

TEST(TopProcessTable, ScrollsNoFurtherThanTheChosenRowNeeds)
{
    ProcessTable scrolled = table();
    EXPECT_EQ(scrolled.first(2), 0U);
    scrolled.move(2);
    EXPECT_EQ(scrolled.first(2), 1U);
    scrolled.move(-1);
    EXPECT_EQ(scrolled.first(2), 1U);
    scrolled.move(-1);
    EXPECT_EQ(scrolled.first(2), 0U);
    scrolled.move(2);
    EXPECT_EQ(scrolled.first(1), 2U);
    EXPECT_EQ(scrolled.first(10), 0U);
}

}  // namespace
}  // namespace nimba::smi::top
