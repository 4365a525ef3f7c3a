// SPDX-License-Identifier: MIT
// The bytes of the records: hosts in C++ that were built earlier rely on them.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace nimba::test {
namespace {

template <class Record, class Field>
std::ptrdiff_t offset(const Record& record, const Field& field)
{
    return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&record);
}

TEST(PageTableRecord, OfAPageTableEntryKeepsItsBytes)
{
    const vidmm_vm_pt entry{};
    EXPECT_EQ(sizeof entry, 144U);
    EXPECT_EQ(sizeof entry.Buffer, 48U);
    EXPECT_EQ(sizeof entry.Addr, 48U);
    EXPECT_EQ(offset(entry, entry.Buffer), 0);
    EXPECT_EQ(offset(entry, entry.Addr), 48);
    EXPECT_EQ(offset(entry, entry.entries), 96);
    EXPECT_EQ(offset(entry, entry.parent), 104);
    EXPECT_EQ(offset(entry, entry.PT_Level), 112);
    EXPECT_EQ(offset(entry, entry.PT_index), 116);
    EXPECT_EQ(offset(entry, entry.PT_sub_entries), 120);
    EXPECT_EQ(offset(entry, entry.next), 128);
    EXPECT_EQ(offset(entry, entry.pre), 136);
}

TEST(PageTableRecord, OfASubTableEntryKeepsItsBytes)
{
    const vidmm_vm_pte_elt3k entry{};
    EXPECT_EQ(sizeof entry, 104U);
    EXPECT_EQ(sizeof entry.Addr, 48U);
    EXPECT_EQ(offset(entry, entry.Snoop), 0);
    EXPECT_EQ(offset(entry, entry.Segment), 2);
    EXPECT_EQ(offset(entry, entry.Addr), 4);
    EXPECT_EQ(offset(entry, entry.LargePage), 52);
    EXPECT_EQ(offset(entry, entry.ST_Level), 56);
    EXPECT_EQ(offset(entry, entry.Index), 60);
    EXPECT_EQ(offset(entry, entry.next), 64);
    EXPECT_EQ(offset(entry, entry.pre), 72);
    EXPECT_EQ(offset(entry, entry.parent), 80);
    EXPECT_EQ(offset(entry, entry.found), 88);
    EXPECT_EQ(offset(entry, entry.parent_level), 92);
    EXPECT_EQ(offset(entry, entry.parent_index), 96);
}

TEST(PageTableRecord, OfADeviceKeepsItsBytes)
{
    const data_vectors device{};
    EXPECT_EQ(sizeof device, 272U);
    EXPECT_EQ(sizeof device.pid, 48U);
    EXPECT_EQ(sizeof device.app_name, 48U);
    EXPECT_EQ(offset(device, device.pid), 0);
    EXPECT_EQ(offset(device, device.app_name), 48);
    EXPECT_EQ(offset(device, device.note), 96);
    EXPECT_EQ(offset(device, device.pt_level0), 128);
    EXPECT_EQ(offset(device, device.pt_level1), 152);
    EXPECT_EQ(offset(device, device.pt_level2), 176);
    EXPECT_EQ(offset(device, device.st_level0), 200);
    EXPECT_EQ(offset(device, device.st_level1), 224);
    EXPECT_EQ(offset(device, device.st_level2), 248);
}

TEST(PageTableRecord, OfAnAllocationsTextsKeepsItsBytes)
{
    const allcation_Info allocation{};
    EXPECT_EQ(sizeof allocation, 160U);
    EXPECT_EQ(offset(allocation, allocation.device_pid), 0);
    EXPECT_EQ(offset(allocation, allocation.device_pname), 32);
    EXPECT_EQ(offset(allocation, allocation.allocation_handle), 64);
    EXPECT_EQ(offset(allocation, allocation.gpu_va), 96);
    EXPECT_EQ(offset(allocation, allocation.size), 128);
}

TEST(PageTableRecord, NumbersHaveTheirSigns)
{
    EXPECT_TRUE((std::is_same_v<decltype(vidmm_vm_pte_elt3k::Snoop), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(vidmm_vm_pte_elt3k::Segment), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(vidmm_vm_pte_elt3k::LargePage), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(vidmm_vm_pte_elt3k::parent_index), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(_PAGETABLE_DATA::pid), std::int64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(_PAGETABLE_DATA::LargePage), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(_PAGETABLE_DATA::parent_index), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(_ALLOCATION_DATA::device_pid), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(_ALLOCATION_DATA::gpu_va), std::int64_t>));
}

}  // namespace
}  // namespace nimba::test
