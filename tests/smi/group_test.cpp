// SPDX-License-Identifier: MIT
#include "tools/smi/memory/group.hpp"

#include "memory_records.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Groups, AreOfEqualShape)
{
    std::vector<Allocation> list{allocation(1, 17, 10), allocation(2, 16, 10),
                                 allocation(3, 17, 10), allocation(4, 17, 0x80000000)};
    list[1].hit_count = 5;
    EXPECT_EQ(group_by_shape(list),
              (std::vector<LeakGroup>{{{0, 0, 10, 0, 0}, 5, {{16, 1}, {17, 2}}},
                                      {{0, 0, 0x80000000, 0, 0}, 1, {{17, 1}}}}));
    EXPECT_TRUE(group_by_shape({}).empty());
}

TEST(Groups, DifferInEachPartOfTheShapeAndInNothingElse)
{
    for (const AllocationField& field : kAllocationFields) {
        std::vector<Allocation> list{allocation(1, 16, 10), allocation(1, 16, 10)};
        list[1].*field.member += 1;
        const std::string name = field.name;
        const bool parts_them = name == "width" || name == "height" || name == "size" ||
                                name == "hw_format" || name == "at_type";
        EXPECT_EQ(group_by_shape(list).size(), parts_them ? 2U : 1U) << name;
    }
}

}  // namespace
}  // namespace nimba::smi
