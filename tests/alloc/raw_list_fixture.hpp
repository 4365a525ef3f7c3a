// SPDX-License-Identifier: MIT
// The raw list of the allocations that a test makes up.
#pragma once

#include "allocation_tree.hpp"
#include "leak_records.hpp"
#include "support/captured_stdout.hpp"
#include "support/messages.hpp"
#include "support/scoped_print_callback.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace nimba::test {

inline constexpr const char* kInvalidPage =
    "get_allocation_raw_list_internal, invalid trasfer_cnt !!!\n";

using Numbers = std::vector<std::int32_t>;

class RawList : public testing::Test {
  protected:
    RawList()
    {
        record_.header.IS_VA_driver[0] = 1;
        std::memset(&buffer_, 0xa5, sizeof buffer_);
        take_messages();
    }

    void TearDown() override { EXPECT_EQ(take_messages(), Texts{}); }

    // Adds `count` allocations of the devices `first` and on, those of high numbers first.
    void add_devices(int count, int first = 1) const
    {
        for (int device = first + count - 1; device >= first; --device) {
            const std::string name = std::to_string(device);
            std::string text = "device=";
            text.append(name).append("\nsize=").append(name).append("\n");
            tree_.add(name, text);
        }
    }

    // Asks for a page in a buffer full of 0xa5; fills buffer_, status_ and output_.
    void page(std::int32_t index,
              decltype(&get_allocation_raw_list) get = get_allocation_raw_list_internal)
    {
        std::memset(&buffer_, 0xa5, sizeof buffer_);
        buffer_.page_index = index;
        output_ = stdout_of([&] { status_ = get(&buffer_, &record_); });
    }

    // Expects a page of the allocations of `devices`, with everything behind them as it was.
    void expect_page(std::int32_t index, std::int32_t total, std::int32_t more,
                     const Numbers& devices)
    {
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(buffer_.page_index, index);
        EXPECT_EQ(buffer_.total_cnt, total);
        EXPECT_EQ(buffer_.more_flag, more);
        ASSERT_EQ(buffer_.trasfer_cnt, static_cast<std::int32_t>(devices.size()));
        for (std::size_t i = 0; i < devices.size(); ++i) {
            Record expected = blank();
            expected.device = devices[i];
            expected.size = devices[i];
            EXPECT_EQ(buffer_.records[i], expected) << "record " << i;
        }
        expect_untouched(devices.size());
    }
    void expect_untouched(std::size_t first_record) const
    {
        Record untouched;
        std::memset(&untouched, 0xa5, sizeof untouched);
        for (std::size_t i = first_record; i < RAW_LIST_BLOCK_MAX; ++i) {
            EXPECT_EQ(buffer_.records[i], untouched) << "record " << i;
        }
    }
    // Expects that nothing of the buffer but page_index was written.
    void expect_untouched_buffer(std::int32_t index) const
    {
        _GFX_ALLOCATION_RAW_LIST expected;
        std::memset(&expected, 0xa5, sizeof expected);
        expected.page_index = index;
        EXPECT_EQ(std::memcmp(&buffer_, &expected, sizeof expected), 0);
    }
    void expect_no_such_page(std::int32_t index, std::int32_t total)
    {
        page(index);
        EXPECT_EQ(output_, kInvalidPage) << "page " << index;
        expect_page(index, total, 0, {});
    }

    AllocationTree tree_;
    const ScopedPrintCallback callback_{keep_message};  // never called: messages are output
    find_adapter record_{};
    _GFX_ALLOCATION_RAW_LIST buffer_;
    std::int32_t status_ = 42;
    std::string output_;
};

// The numbers from `first` to `last`.
inline Numbers numbers(std::int32_t first, std::int32_t last)
{
    Numbers all;
    for (std::int32_t number = first; number <= last; ++number) {
        all.push_back(number);
    }
    return all;
}

}  // namespace nimba::test
