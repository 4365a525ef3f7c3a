// SPDX-License-Identifier: MIT
// The owner of a sub-table entry as numbers.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

using Chain = std::vector<vidmm_vm_pte_elt3k>;
using Owner = std::pair<std::int32_t, std::int32_t>;
using Owners = std::vector<Owner>;

// What the entries' owners are before anything is written.
constexpr Owner kBefore{77, 88};

// Chains the entries from `first` up to `end`; the first gets the owner, which may be null.
void chain(Chain& entries, std::size_t first, std::size_t end, vidmm_vm_pt* owner)
{
    entries[first].parent = owner;
    for (std::size_t i = first + 1; i < end; ++i) {
        entries[i].pre = &entries[i - 1];
        entries[i - 1].next = &entries[i];
    }
}

Chain unowned(std::size_t count)
{
    vidmm_vm_pte_elt3k entry{};
    entry.parent_level = kBefore.first;
    entry.parent_index = kBefore.second;
    return Chain(count, entry);
}

Owners owners(const Chain& entries)
{
    Owners found;
    for (const vidmm_vm_pte_elt3k& entry : entries) {
        found.emplace_back(entry.parent_level, entry.parent_index);
    }
    return found;
}

vidmm_vm_pt page_table(std::int32_t level, std::int32_t index)
{
    vidmm_vm_pt entry{};
    entry.PT_Level = level;
    entry.PT_index = index;
    return entry;
}

TEST(DigitalIndex, OfAWholeRunIsThatOfItsHeadsParent)
{
    vidmm_vm_pt owner = page_table(2, 524288);
    Chain run = unowned(3);
    chain(run, 0, 3, &owner);
    append_DigitalIndex(run[0]);
    EXPECT_EQ(owners(run), (Owners{{2, 524288}, {2, 524288}, {2, 524288}}));
}

TEST(DigitalIndex, OfARunOfOneIsWritten)
{
    vidmm_vm_pt owner = page_table(0, -5);
    Chain run = unowned(1);
    chain(run, 0, 1, &owner);
    append_DigitalIndex(run[0]);
    EXPECT_EQ(owners(run), (Owners{{0, -5}}));
}

TEST(DigitalIndex, IsNotWrittenForAnEntryThatIsNoHead)
{
    vidmm_vm_pt owner = page_table(1, 9);
    Chain run = unowned(3);
    chain(run, 0, 3, &owner);
    run[1].parent = &owner;
    append_DigitalIndex(run[1]);
    EXPECT_EQ(owners(run), (Owners{kBefore, kBefore, kBefore}));
}

TEST(DigitalIndex, IsNotWrittenForARunWithoutAnOwner)
{
    Chain run = unowned(2);
    chain(run, 0, 2, nullptr);
    append_DigitalIndex(run[0]);
    EXPECT_EQ(owners(run), (Owners{kBefore, kBefore}));
}

TEST(DigitalIndex, LeavesOtherRunsAlone)
{
    vidmm_vm_pt owner = page_table(1, 9);
    Chain run = unowned(4);
    chain(run, 0, 1, &owner);
    chain(run, 1, 3, &owner);
    chain(run, 3, 4, &owner);
    append_DigitalIndex(run[1]);
    EXPECT_EQ(owners(run), (Owners{kBefore, {1, 9}, {1, 9}, kBefore}));
}

TEST(DigitalIndex, ChangesNothingElse)
{
    vidmm_vm_pt owner = page_table(2, 3);
    Chain run = unowned(2);
    chain(run, 0, 2, &owner);
    run[1].Snoop = 1;
    run[1].Segment = 2;
    run[1].LargePage = 3;
    run[1].ST_Level = 4;
    run[1].Index = 5;
    append_DigitalIndex(run[0]);
    EXPECT_EQ(run[0].parent, &owner);
    EXPECT_EQ(run[0].next, &run[1]);
    EXPECT_EQ(run[1].pre, run.data());
    EXPECT_EQ(run[1].parent, nullptr);
    EXPECT_EQ(run[1].Snoop, 1);
    EXPECT_EQ(run[1].Segment, 2);
    EXPECT_EQ(run[1].LargePage, 3);
    EXPECT_EQ(run[1].ST_Level, 4);
    EXPECT_EQ(run[1].Index, 5);
    EXPECT_EQ(run[1].found, 0);
    EXPECT_EQ(owner.PT_sub_entries, nullptr);
}

TEST(DigitalIndex, OfAnyNumberOfEntriesIsWritten)
{
    vidmm_vm_pt owner = page_table(2, 1);
    Chain run = unowned(1'000'000);
    chain(run, 0, run.size(), &owner);
    append_DigitalIndex(run[0]);
    EXPECT_EQ(owners(run), Owners(1'000'000, Owner{2, 1}));
}

TEST(DigitalIndex, OfADeviceIsWrittenForEveryRunOfEveryLevel)
{
    data_vectors device{};
    device.pt_level0 = {page_table(0, 2)};
    device.pt_level1 = {page_table(1, 1024), page_table(1, 1025)};
    device.pt_level2 = {page_table(2, 524288)};
    device.st_level0 = unowned(1);
    device.st_level1 = unowned(5);
    device.st_level2 = unowned(2);
    chain(device.st_level0, 0, 1, device.pt_level0.data());
    chain(device.st_level1, 0, 2, device.pt_level1.data());
    chain(device.st_level1, 2, 3, nullptr);
    chain(device.st_level1, 3, 5, &device.pt_level1[1]);
    chain(device.st_level2, 0, 2, device.pt_level2.data());
    generate_DigitalIndex(device);
    EXPECT_EQ(owners(device.st_level0), (Owners{{0, 2}}));
    EXPECT_EQ(owners(device.st_level1),
              (Owners{{1, 1024}, {1, 1024}, kBefore, {1, 1025}, {1, 1025}}));
    EXPECT_EQ(owners(device.st_level2), (Owners{{2, 524288}, {2, 524288}}));
}

TEST(DigitalIndex, OfADeviceWithoutEntriesIsNothing)
{
    data_vectors device{};
    generate_DigitalIndex(device);
    EXPECT_TRUE(device.st_level0.empty());
    EXPECT_TRUE(device.st_level1.empty());
    EXPECT_TRUE(device.st_level2.empty());
}

}  // namespace
}  // namespace nimba::test
