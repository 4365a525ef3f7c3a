// SPDX-License-Identifier: MIT
// A device with more entries than are reserved for it.
#include "collector_fixture.hpp"

#include <array>
#include <cstddef>

namespace nimba::test {
namespace {

// Appends a page-table line of this level and index.
void append_page_table(std::string& dump, int level, int index)
{
    dump += std::to_string(level) + ":" + std::to_string(index) +
            ": entry addr:" + std::to_string(index) + "000, buffer:pt\n";
}

// Appends a sub-table of this level with entries 0, 1, ...
void append_sub_table(std::string& dump, int level, int entries)
{
    for (int index = 0; index < entries; ++index) {
        dump += std::to_string(level) + ":" + std::to_string(index) +
                " Snoop:1 Segment:2 LargePage:0 Addr:3000\n";
    }
}

// 150 entries of level 0 with a sub-table of 1 entry each, 1,200 of level 1 with 17 entries each,
// 20,400 of level 2 with 15 entries each: 150, 20,400 and 306,000 sub-table entries.
std::string large_dump()
{
    std::string dump;
    for (int root = 0; root < 150; ++root) {
        append_page_table(dump, 0, root);
        append_sub_table(dump, 0, 1);
        for (int middle = root * 8; middle < root * 8 + 8; ++middle) {
            append_page_table(dump, 1, middle);
            append_sub_table(dump, 1, 17);
            for (int leaf = middle * 17; leaf < middle * 17 + 17; ++leaf) {
                append_page_table(dump, 2, leaf);
                append_sub_table(dump, 2, 15);
            }
        }
    }
    return dump;
}

// The number of entries that are not in their place or do not name their owner, when sub-tables of
// this level have so many entries each.
std::size_t misplaced(const std::vector<vidmm_vm_pte_elt3k>& entries, std::int32_t level,
                      std::int32_t entries_of_one)
{
    std::size_t count = 0;
    std::int32_t number = 0;
    for (const vidmm_vm_pte_elt3k& entry : entries) {
        const bool placed = entry.ST_Level == level && entry.Index == number % entries_of_one &&
                            entry.parent_level == level &&
                            entry.parent_index == number / entries_of_one;
        count += placed ? 0 : 1;
        ++number;
    }
    return count;
}

std::size_t misplaced(const std::vector<vidmm_vm_pt>& entries, std::int32_t level)
{
    std::size_t count = 0;
    std::int32_t number = 0;
    for (const vidmm_vm_pt& entry : entries) {
        count += entry.PT_Level == level && entry.PT_index == number ? 0 : 1;
        ++number;
    }
    return count;
}

class LargeDevice : public CollectorTest {
  protected:
    LargeDevice()
    {
        driver_.add_device("1", "pid = 101\n", large_dump());
        add("2", "102");
        collect_once();
    }
};

TEST_F(LargeDevice, IsCollectedWithAllItsEntriesAndTheirOwners)
{
    EXPECT_EQ(status_, 0);
    ASSERT_EQ(processes(), (Texts{"101: process 101", "102: process 102"}));
    const data_vectors& device = devices_[0];
    EXPECT_EQ(device.pt_level0.size(), 150U);
    EXPECT_EQ(device.pt_level1.size(), 1200U);
    EXPECT_EQ(device.pt_level2.size(), 20400U);
    EXPECT_EQ(device.st_level0.size(), 150U);
    EXPECT_EQ(device.st_level1.size(), 20400U);
    EXPECT_EQ(device.st_level2.size(), 306000U);
    EXPECT_EQ(misplaced(device.pt_level0, 0), 0U);
    EXPECT_EQ(misplaced(device.pt_level1, 1), 0U);
    EXPECT_EQ(misplaced(device.pt_level2, 2), 0U);
    EXPECT_EQ(misplaced(device.st_level0, 0, 1), 0U);
    EXPECT_EQ(misplaced(device.st_level1, 1, 17), 0U);
    EXPECT_EQ(misplaced(device.st_level2, 2, 15), 0U);
}

TEST_F(LargeDevice, LeavesNothingInTheNext)
{
    ASSERT_EQ(devices_.size(), 2U);
    const data_vectors& device = devices_[1];
    EXPECT_EQ(in_short(device.pt_level0), (Texts{"0:7 1000 root"}));
    EXPECT_TRUE(device.pt_level1.empty());
    EXPECT_TRUE(device.pt_level2.empty());
    EXPECT_TRUE(device.st_level0.empty());
    EXPECT_TRUE(device.st_level1.empty());
    EXPECT_TRUE(device.st_level2.empty());
}

// A run of more entries than are reserved, whose owner moved when its own array grew.
TEST_F(LargeDevice, MayHaveASingleLongRun)
{
    std::string dump;
    append_page_table(dump, 0, 1);
    append_page_table(dump, 1, 2);
    append_sub_table(dump, 1, 20001);
    for (int index = 0; index < 1001; ++index) {
        append_page_table(dump, 1, index);
    }
    driver_.forget_devices();
    driver_.add_device("1", "pid = 101\n", dump);
    devices_.clear();
    collect_once();
    ASSERT_EQ(devices_.size(), 1U);
    const std::vector<vidmm_vm_pte_elt3k>& run = devices_[0].st_level1;
    ASSERT_EQ(run.size(), 20001U);
    EXPECT_EQ(in_short(run.front()), "1:0 1,2,0 3000 of 1:2");
    EXPECT_EQ(in_short(run.back()), "1:20000 1,2,0 3000 of 1:2");
}

}  // namespace
}  // namespace nimba::test
