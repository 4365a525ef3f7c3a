// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/picture.hpp"

#include "page_table_spaces.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

// Pages 0 and 1, 2 in another segment, 10, 12.
AddressSpace space()
{
    return viewer({page(2048, 0, "1000"), page(2048, 1, "90000"), page(2048, 2, "a000", 1),
                   page(2048, 10, "b000"), page(2048, 12, "c000")})
        .space;
}

TEST(Picture, JoinsLikePagesWhereverTheyAreInMemory)
{
    const Picture picture = picture_of(space(), 10);
    ASSERT_EQ(picture.patches.size(), 4U);
    EXPECT_EQ(picture.patches[0],
              (Patch{{0x100000000, 0x100002000}, 0x2000, 1, {{{12, 0, false}, 0x2000}}}));
    EXPECT_EQ(picture.patches[1],
              (Patch{{0x100002000, 0x100003000}, 0x1000, 1, {{{12, 1, false}, 0x1000}}}));
    EXPECT_EQ(picture.stretches, 4U);
    EXPECT_EQ(picture.mapped, 0x5000U);
    EXPECT_EQ(picture.largest, 0x2000U);
    EXPECT_EQ(picture_text(picture), "20 KiB mapped in 4 stretches of like pages");
}

TEST(Picture, MakesOneOfWhatIsClosestTogether)
{
    const Picture picture = picture_of(space(), 2);
    ASSERT_EQ(picture.patches.size(), 2U);
    EXPECT_EQ(picture.patches[0].range, (AddressRange{0x100000000, 0x100003000}));
    EXPECT_EQ(patch_text(picture.patches[0]),
              "2 stretches: segment 0, 4 KiB pages (8 KiB); segment 1, 4 KiB pages (4 KiB)");
    EXPECT_FALSE(has_one_segment(picture.patches[0]));
    EXPECT_FALSE(picture.patches[0].has_gaps());
    EXPECT_EQ(picture.patches[1],
              (Patch{{0x10000a000, 0x10000d000}, 0x2000, 2, {{{12, 0, false}, 0x2000}}}));
    EXPECT_TRUE(picture.patches[1].has_gaps());
    EXPECT_EQ(patch_text(picture.patches[1]),
              "2 stretches, 8 KiB mapped: segment 0, 4 KiB pages (8 KiB)");
    EXPECT_TRUE(has_one_segment(picture.patches[1]));
    EXPECT_EQ(picture_text(picture), "20 KiB mapped in 4 stretches of like pages, drawn as 2");
}

TEST(Picture, FoldsGapsThatAreLargerThanTheLargestPatch)
{
    const Picture picture = picture_of(space(), 10);
    const auto groups = picture.groups();
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].size(), 2U);
    EXPECT_EQ(groups[1].size(), 2U);
}

TEST(Picture, OfNothingHasNothing)
{
    const Picture picture = picture_of({}, 10);
    EXPECT_TRUE(picture.patches.empty());
    EXPECT_TRUE(picture.groups().empty());
    EXPECT_EQ(picture_text(picture), "nothing is mapped");
}

TEST(Picture, TellsThreeKindsOfAPatch)
{
    const auto many = viewer({page(2048, 0, "1000"), page(2048, 1, "2000", 1),
                              page(2048, 2, "3000", 2, 1), page(2048, 3, "4000", 3)})
                          .space;
    EXPECT_EQ(patch_text(picture_of(many, 1).patches.front()),
              "4 stretches: segment 0, 4 KiB pages (4 KiB); segment 1, 4 KiB pages (4 KiB); "
              "segment 2, 4 KiB pages, snooped (4 KiB); 1 more kind");
}

TEST(Picture, CountsTheKindsThatItDoesNotTell)
{
    const auto many =
        viewer({page(2048, 0, "1000"), page(2048, 1, "2000", 1), page(2048, 2, "3000", 2),
                page(2048, 3, "4000", 3), page(2048, 4, "5000", 4)})
            .space;
    EXPECT_TRUE(patch_text(picture_of(many, 1).patches.front()).ends_with("; 2 more kinds"));
}

TEST(Picture, FindsTheAllocationsInARange)
{
    const std::vector<VmAllocation> allocations{{"b", {0x3000, 0x4000}},
                                                {"a", {0x1000, 0x3001}},
                                                {"c", {0x5000, 0x6000}},
                                                {"empty", {0x3500, 0x3500}}};
    const auto inside = allocations_in(allocations, {0x3000, 0x5000});
    ASSERT_EQ(inside.size(), 2U);
    EXPECT_EQ(inside[0].handle, "a");
    EXPECT_EQ(inside[1].handle, "b");
}

}  // namespace
}  // namespace nimba::smi
