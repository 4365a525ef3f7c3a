// SPDX-License-Identifier: MIT
// What the reader makes of the text of one allocation.
#pragma once

#include "allocation_tree.hpp"
#include "directory_listing.hpp"
#include "leak_records.hpp"
#include "support/captured_stdout.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace nimba::test {

// Kinds of drivers, as the reader is told them.
inline constexpr std::int32_t kVa = 1;
inline constexpr std::int32_t kLegacy = 0;

// A node with every key, in the usual order.
inline constexpr const char* kUsualNode =
    "handle=101\ndevice=2\nwidth=3\nheight=4\npitch=5\nbit_cnt=6\nsecured=7\nsize=8\n"
    "tile=9\ncpu_visible=10\ncache_type=11\npool_type=12\nat_type=13\nsegmentid=14\n"
    "hw_format=15\ncompress_format=16\nbl_slot_index=17\ngpu_virt_addr=18\nimported=19\n"
    "fb_offset=20\nshare=21\n";

class AllocationText : public testing::Test {
  protected:
    AllocationText() { tree_.add("usual", kUsualNode); }

    // What an allocation is read as when this is its node: the first of a pass, behind itself and
    // behind another alike.
    Record read(std::string_view text, std::int32_t va_driver = kVa)
    {
        tree_.add("1", text);
        Records list;
        std::int32_t status = 42;
        const std::string output = stdout_of([&] {
            const ListedAs listed{{"1", "1", "usual", "1"}};
            status = get_current_allocation_data_try(list, 0, va_driver);
        });
        EXPECT_EQ(status, 0);
        EXPECT_EQ(output, "");
        EXPECT_EQ(list.size(), 4U);
        list.resize(4);
        EXPECT_EQ(list[0], list[1]);
        EXPECT_EQ(list[0], list[3]);
        EXPECT_EQ(list[2], allocation(257));
        return list.front();
    }

    AllocationTree tree_;
};

}  // namespace nimba::test
