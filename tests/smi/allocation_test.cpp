// SPDX-License-Identifier: MIT
#include "tools/smi/memory/allocation.hpp"

#include "memory_records.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::smi {
namespace {

std::vector<int32_t> handles(const std::vector<Allocation>& allocations)
{
    std::vector<int32_t> result;
    result.reserve(allocations.size());
    for (const Allocation& record : allocations) {
        result.push_back(record.handle);
    }
    return result;
}

TEST(AllocationSize, IsUnsigned)
{
    EXPECT_EQ(bytes_of(allocation(1, 1, 4096)), 4096U);
    EXPECT_EQ(bytes_of(allocation(1, 1, 0x80000000)), 2147483648U);
    EXPECT_EQ(bytes_of(allocation(1, 1, 0xFFFFFFFF)), 4294967295U);
}

TEST(RepeatedAllocations, AreThoseThatAreEqualInEveryField)
{
    std::vector<Allocation> list{allocation(1, 16, 10), allocation(2, 16, 10),
                                 allocation(1, 16, 10), allocation(2, 17, 10),
                                 allocation(1, 16, 10)};
    drop_repeated(list);
    EXPECT_EQ(handles(list), (std::vector<int32_t>{1, 2, 2}));
}

TEST(RepeatedAllocations, DifferInAnyFieldOfTheDriver)
{
    for (const AllocationField& field : kAllocationFields) {
        std::vector<Allocation> list{allocation(1, 16, 10), allocation(1, 16, 10)};
        list[1].*field.member += 1;
        drop_repeated(list);
        EXPECT_EQ(list.size(), 2U) << field.name;
    }
}

TEST(RepeatedAllocations, AreToldApartByNoCounterAndTheFirstStays)
{
    std::vector<Allocation> list{allocation(1, 16, 10), allocation(1, 16, 10)};
    list[0].hit_count = 7;
    list[1].sum_count = 3;
    drop_repeated(list);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].hit_count, 7);
}

}  // namespace
}  // namespace nimba::smi
