// SPDX-License-Identifier: MIT
// The part of the current adapter that the library does not export.
#include "core/current_adapter.hpp"

#include "nimba_mgmt_interface.h"
#include "support/messages.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace nimba::test {
namespace {

class CurrentAdapter : public testing::Test {
  protected:
    CurrentAdapter()
    {
        set_print_callback(keep_message);
        record_.header.chip_id[0] = 0x7777;
        record_.header.IS_VA_driver[1] = 1;
        record_.header.chip_id[2] = 0x8888;
        record_.header.IS_VA_driver[2] = 5;
    }
    ~CurrentAdapter() override
    {
        gfx_global_exit(0);
        take_messages();
    }

    std::int32_t init(std::int32_t slot)
    {
        record_.chip_id_idx = slot;
        return gfx_global_init(&record_);
    }

    find_adapter record_{};
};

TEST_F(CurrentAdapter, IsTheSlotsAlsoAfterAFailedInit)
{
    EXPECT_EQ(init(0), -1);
    EXPECT_EQ(current_chip_id, 0x7777U);
    EXPECT_EQ(current_is_va_driver, 0);
    EXPECT_EQ(init(1), -1);
    EXPECT_EQ(current_chip_id, 0U);
    EXPECT_EQ(current_is_va_driver, 1);
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(current_chip_id, 0x8888U);
    EXPECT_EQ(current_is_va_driver, 5);
}

TEST_F(CurrentAdapter, StaysAfterExit)
{
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(gfx_global_exit(2), 0);
    EXPECT_EQ(current_chip_id, 0x8888U);
    EXPECT_EQ(current_is_va_driver, 5);
}

TEST_F(CurrentAdapter, IsNotSetBySelectingASlot)
{
    EXPECT_EQ(init(2), -1);
    record_.chip_id_idx = 0;
    EXPECT_EQ(gpuinfo_select_new_chip(&record_), 0);
    EXPECT_EQ(current_chip_id, 0x8888U);
    EXPECT_EQ(current_is_va_driver, 5);
}

}  // namespace
}  // namespace nimba::test
