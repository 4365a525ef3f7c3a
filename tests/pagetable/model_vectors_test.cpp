// SPDX-License-Identifier: MIT
// The arrays of a device.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace nimba::test {
namespace {

using Six = std::array<std::size_t, 6>;

Six capacities(const data_vectors& device)
{
    return {device.pt_level0.capacity(), device.pt_level1.capacity(), device.pt_level2.capacity(),
            device.st_level0.capacity(), device.st_level1.capacity(), device.st_level2.capacity()};
}

Six sizes(const data_vectors& device)
{
    return {device.pt_level0.size(), device.pt_level1.size(), device.pt_level2.size(),
            device.st_level0.size(), device.st_level1.size(), device.st_level2.size()};
}

void resize(data_vectors& device, const Six& to)
{
    device.pt_level0.resize(to[0]);
    device.pt_level1.resize(to[1]);
    device.pt_level2.resize(to[2]);
    device.st_level0.resize(to[3]);
    device.st_level1.resize(to[4]);
    device.st_level2.resize(to[5]);
}

TEST(PageTableVectors, GetTheirUsualCapacities)
{
    data_vectors device{};
    create_vector(device);
    EXPECT_EQ(capacities(device), (Six{100, 1000, 20000, 100, 20000, 300000}));
    EXPECT_EQ(sizes(device), Six{});
}

TEST(PageTableVectors, ThatAreSmallerGrow)
{
    data_vectors device{};
    resize(device, {99, 999, 19999, 99, 19999, 299999});
    create_vector(device);
    EXPECT_EQ(capacities(device), (Six{100, 1000, 20000, 100, 20000, 300000}));
}

TEST(PageTableVectors, ThatAreLargerStayAsTheyAre)
{
    data_vectors device{};
    resize(device, {101, 1001, 20001, 101, 20001, 300001});
    const vidmm_vm_pt* const page_tables = device.pt_level0.data();
    const vidmm_vm_pte_elt3k* const sub_tables = device.st_level2.data();
    create_vector(device);
    EXPECT_EQ(capacities(device), (Six{101, 1001, 20001, 101, 20001, 300001}));
    EXPECT_EQ(device.pt_level0.data(), page_tables);
    EXPECT_EQ(device.st_level2.data(), sub_tables);
}

TEST(PageTableVectors, AreReservedEachForItself)
{
    data_vectors device{};
    device.pt_level1.reserve(1500);
    device.st_level0.reserve(50);
    create_vector(device);
    EXPECT_EQ(capacities(device), (Six{100, 1500, 20000, 100, 20000, 300000}));
}

TEST(PageTableVectors, KeepTheirContentsWhenTheyAreReserved)
{
    data_vectors device{};
    resize(device, {1, 2, 3, 4, 5, 6});
    device.pt_level2[2].PT_index = 22;
    device.st_level2[5].Index = 55;
    create_vector(device);
    EXPECT_EQ(sizes(device), (Six{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(device.pt_level2[2].PT_index, 22);
    EXPECT_EQ(device.st_level2[5].Index, 55);
}

TEST(PageTableVectors, ThatGrowKeepTheirLinks)
{
    data_vectors device{};
    resize(device, {1, 2, 0, 0, 2, 0});
    device.pt_level0[0].entries = device.pt_level1.data();
    device.pt_level1[0].parent = device.pt_level0.data();
    device.pt_level1[0].next = &device.pt_level1[1];
    device.pt_level1[1].pre = device.pt_level1.data();
    device.pt_level1[1].PT_sub_entries = device.st_level1.data();
    device.st_level1[0].parent = &device.pt_level1[1];
    device.st_level1[0].next = &device.st_level1[1];
    device.st_level1[1].pre = device.st_level1.data();
    create_vector(device);
    EXPECT_EQ(device.pt_level0[0].entries, device.pt_level1.data());
    EXPECT_EQ(device.pt_level1[0].parent, device.pt_level0.data());
    EXPECT_EQ(device.pt_level1[0].next, &device.pt_level1[1]);
    EXPECT_EQ(device.pt_level1[1].pre, device.pt_level1.data());
    EXPECT_EQ(device.pt_level1[1].PT_sub_entries, device.st_level1.data());
    EXPECT_EQ(device.st_level1[0].parent, &device.pt_level1[1]);
    EXPECT_EQ(device.st_level1[0].next, &device.st_level1[1]);
    EXPECT_EQ(device.st_level1[1].pre, device.st_level1.data());
    EXPECT_EQ(device.pt_level0[0].parent, nullptr);
    EXPECT_EQ(device.st_level1[1].next, nullptr);
}

TEST(PageTableVectors, DoNotMoveWhenTheyAreReservedAgain)
{
    data_vectors device{};
    create_vector(device);
    const vidmm_vm_pt* const page_tables = device.pt_level2.data();
    const vidmm_vm_pte_elt3k* const sub_tables = device.st_level1.data();
    create_vector(device);
    EXPECT_EQ(device.pt_level2.data(), page_tables);
    EXPECT_EQ(device.st_level1.data(), sub_tables);
}

TEST(PageTableVectors, ReservedEmptyTheNoteAndNoOtherText)
{
    data_vectors device{};
    std::strcpy(device.pid, "101");
    std::strcpy(device.app_name, "viewer");
    device.note = "a note";
    create_vector(device);
    EXPECT_EQ(device.note, "");
    EXPECT_STREQ(device.pid, "101");
    EXPECT_STREQ(device.app_name, "viewer");
}

TEST(PageTableVectors, ThatAreCleanedKeepTheirCapacitiesAndPlaces)
{
    data_vectors device{};
    create_vector(device);
    resize(device, {1, 2, 3, 4, 5, 300001});
    const Six before = capacities(device);
    const vidmm_vm_pt* const page_tables = device.pt_level0.data();
    const vidmm_vm_pte_elt3k* const sub_tables = device.st_level2.data();
    clean_vector(&device);
    EXPECT_EQ(sizes(device), Six{});
    EXPECT_EQ(capacities(device), before);
    EXPECT_EQ(device.pt_level0.data(), page_tables);
    EXPECT_EQ(device.st_level2.data(), sub_tables);
}

TEST(PageTableVectors, ThatWereNeverReservedCanBeCleaned)
{
    data_vectors device{};
    device.st_level1.resize(3);
    clean_vector(&device);
    EXPECT_EQ(sizes(device), Six{});
}

}  // namespace
}  // namespace nimba::test
