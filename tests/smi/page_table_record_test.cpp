// SPDX-License-Identifier: MIT
// What workers tell of page tables, on its way to the tool.
#include "tools/smi/pagetable/record.hpp"
#include "tools/smi/pagetable/source.hpp"
#include "tools/smi/worker/page_tables.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <vector>

namespace nimba::smi {
namespace {

TEST(PageTableRecords, TravelInBlocks)
{
    const Block<TableRecord> tables{{{0, 1, "10", "pt0"}, {2, -3, "", ""}}};
    EXPECT_EQ(to_json_value(tables).dump(), R"([0,1,"10","pt0",2,-3,"",""])");
    EXPECT_EQ(payload_from<Block<TableRecord>>(to_json_value(tables)), tables);
    const Block<PageRecord> pages{{{2, 17, 2, 2048, 1, 65535, 3, "1a2b3000"}}};
    EXPECT_EQ(to_json_value(pages).dump(), R"([2,17,2,2048,1,65535,3,"1a2b3000"])");
    EXPECT_EQ(payload_from<Block<PageRecord>>(to_json_value(pages)), pages);
    const Block<VmAllocationRecord> allocations{{{"7", "a1", "1000", "20"}}};
    EXPECT_EQ(payload_from<Block<VmAllocationRecord>>(to_json_value(allocations)), allocations);
    const PageTableContents contents{{{3, "7", "maze", {1, 2, 3}, {4, 5, 6}}}, 9};
    EXPECT_EQ(payload_from<PageTableContents>(to_json_value(contents)), contents);
}

TEST(PageTableRecords, OfAnotherShapeAreNone)
{
    EXPECT_EQ(payload_from<Block<TableRecord>>(nlohmann::json::parse(R"([0,1,"10"])")),
              std::nullopt);
    EXPECT_EQ(payload_from<Block<TableRecord>>(nlohmann::json::parse(R"([0,"x","10","pt0"])")),
              std::nullopt);
    EXPECT_EQ(payload_from<Block<TableRecord>>(nlohmann::json::parse("7")), std::nullopt);
}

data_vectors device(const char* pid, std::vector<vidmm_vm_pte_elt3k> pages)
{
    data_vectors device{};
    std::strcpy(device.pid, pid);
    device.st_level2 = std::move(pages);
    return device;
}

vidmm_vm_pte_elt3k entry(int32_t index)
{
    vidmm_vm_pte_elt3k entry{};
    entry.ST_Level = 2;
    entry.Index = index;
    return entry;
}

TEST(PageTables, LeaveOutWhatWasReadTwice)
{
    vidmm_vm_pte_elt3k linked = entry(1);
    linked.next = &linked;
    const std::vector devices{device("7", {entry(1)}), device("8", {entry(1)}),
                              device("7", {entry(2)}), device("7", {entry(1), entry(2)}),
                              device("7", {linked})};
    EXPECT_EQ(distinct_devices(devices), (std::vector<std::size_t>{0, 1, 2, 3}));
    const std::vector<allcation_Info> nodes{{"7", "maze", "a1", "1000", "20"},
                                            {"7", "maze", "a1", "1000", "20"},
                                            {"7", "maze", "a1", "1000", "21"}};
    EXPECT_EQ(distinct_allocations(nodes), (std::vector<std::size_t>{0, 2}));
}

TEST(ChosenDevices, AreThoseOfTheProcesses)
{
    const PageTableContents contents{
        {{0, "7", "", {}, {}}, {1, "x", "", {}, {}}, {2, "8", "", {}, {}}, {3, "7", "", {}, {}}},
        0};
    std::vector<Problem> problems;
    EXPECT_EQ(chosen_devices(contents, {}, problems).size(), 4U);
    const std::vector<int64_t> pids{7, 9};
    const auto chosen = chosen_devices(contents, pids, problems);
    ASSERT_EQ(chosen.size(), 2U);
    EXPECT_EQ(chosen[1].number, 3U);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].status, ExitStatus::kNoAdapter);
    EXPECT_EQ(problems[0].message,
              "process 9 has no GPU page tables; nimba-smi pagetable shows those that have");
}

}  // namespace
}  // namespace nimba::smi
