// SPDX-License-Identifier: MIT
#include "tools/smi/worker/own_adapter.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace nimba::smi {
namespace {

TEST(SlotNow, IsWhereTheAdapterIs)
{
    const std::vector<SlotIdentity> slots{{0, "0000:03:00.0", "Gpu0:Nimba-K1"},
                                          {1, "0000:04:00.0", "Gpu1:QV M-30"}};
    EXPECT_EQ(slot_now(1, "0000:04:00.0", slots), 1);
    EXPECT_EQ(slot_now(0, "0000:04:00.0", slots), 1);
    EXPECT_EQ(slot_now(1, "0000:03:00.0", slots), 0);
    EXPECT_EQ(slot_now(0, "0000:05:00.0", slots), std::nullopt);
    EXPECT_EQ(slot_now(-1, "", slots), std::nullopt);
}

TEST(SlotNow, IsTheSameWhenTwoShareABusId)
{
    const std::vector<SlotIdentity> slots{{0, "0000:03:00.0", "Gpu0:Nimba-K1"},
                                          {1, "0000:03:00.0", "Gpu1:Nimba-K1"}};
    EXPECT_EQ(slot_now(0, "0000:03:00.0", slots), 0);
    EXPECT_EQ(slot_now(1, "0000:03:00.0", slots), 1);
    EXPECT_EQ(slot_now(2, "0000:03:00.0", slots), 0);
}

TEST(RecordToEnter, PutsRightWhatAnotherGpuTookOver)
{
    find_adapter found{};
    found.header.chip_id[2] = 0x2684;
    found.header.drm_card_idx[2] = 3;
    found.header.drm_fd[2] = 42;
    found.header.IS_VA_driver[2] = 1;
    Adapter adapter;
    adapter.slot = 2;
    adapter.device_id = 0x1013;
    adapter.card = 12;
    const find_adapter record = record_to_enter(found, adapter);
    EXPECT_EQ(record.chip_id_idx, 2);
    EXPECT_EQ(record.header.chip_id[2], 0x1013U);
    EXPECT_EQ(record.header.drm_card_idx[2], 12);
    EXPECT_EQ(record.header.drm_fd[2], 42);
    EXPECT_EQ(record.header.IS_VA_driver[2], 1);
}

TEST(RecordToEnter, LeavesTheOtherSlotsAlone)
{
    find_adapter found{};
    found.header.chip_id[0] = 0x1001;
    found.header.drm_card_idx[0] = 5;
    Adapter adapter;
    adapter.slot = 1;
    const find_adapter record = record_to_enter(found, adapter);
    EXPECT_EQ(record.header.chip_id[0], 0x1001U);
    EXPECT_EQ(record.header.drm_card_idx[0], 5);
    EXPECT_EQ(record.header.chip_id[1], 0U);
    EXPECT_EQ(record.header.drm_card_idx[1], -1);
}

}  // namespace
}  // namespace nimba::smi
