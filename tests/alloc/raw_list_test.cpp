// SPDX-License-Identifier: MIT
// The raw list: its order, its pages, and what a failure leaves.
#include "core/current_adapter.hpp"
#include "directory_listing.hpp"
#include "raw_list_fixture.hpp"
#include "recorded_pauses.hpp"
#include "support/descriptor.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;

TEST_F(RawList, OfNoAllocationsIsOneEmptyPage)
{
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 0, 0, {});
    expect_no_such_page(1, 0);
    expect_no_such_page(-1, 0);
}

TEST_F(RawList, OfOneAllocationIsOnePage)
{
    add_devices(1);
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 1, 0, {1});
    expect_no_such_page(1, 1);
}

TEST_F(RawList, OfTwentyAllocationsIsOnePage)
{
    add_devices(20);
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 20, 0, numbers(1, 20));
    expect_no_such_page(1, 20);
}

TEST_F(RawList, OfTwentyOneAllocationsIsTwoPages)
{
    add_devices(21);
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 21, 1, numbers(1, 20));
    page(1);
    EXPECT_EQ(output_, "");
    expect_page(1, 21, 0, {21});
    expect_no_such_page(2, 21);
}

TEST_F(RawList, OfFortyAllocationsIsTwoPages)
{
    add_devices(40);
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 40, 1, numbers(1, 20));
    page(1);
    EXPECT_EQ(output_, "");
    expect_page(1, 40, 0, numbers(21, 40));
    expect_no_such_page(2, 40);
}

TEST_F(RawList, HandsOutItsPagesInAnyOrder)
{
    add_devices(45);
    page(0);
    page(2);
    EXPECT_EQ(output_, "");
    expect_page(2, 45, 0, numbers(41, 45));
    page(1);
    expect_page(1, 45, 1, numbers(21, 40));
    page(2);
    expect_page(2, 45, 0, numbers(41, 45));
    page(0);
    expect_page(0, 45, 1, numbers(1, 20));
}

TEST_F(RawList, HasNoPageBehindItsEndOrBeforeItsStart)
{
    add_devices(45);
    page(0);
    tree_.remove_all();  // none of these reads the driver
    constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    for (const std::int32_t index : {3,
                                     4,
                                     1000,
                                     -1,
                                     -2,
                                     -1000,
                                     kHighest,
                                     kHighest - 1,
                                     kLowest,
                                     kLowest + 1,
                                     kHighest / 20,
                                     kHighest / 20 + 1,
                                     kHighest / 20 + 2,
                                     kHighest / 20 + 3,
                                     kHighest / 10 + 1,
                                     kHighest / 5 + 1,
                                     kHighest / 5 + 2,
                                     kLowest / 20,
                                     kLowest / 20 - 1,
                                     kLowest / 2,
                                     kHighest / 2 + 1}) {
        expect_no_such_page(index, 45);
    }
    page(2);
    expect_page(2, 45, 0, numbers(41, 45));
}

TEST_F(RawList, IsReadAfreshByPageZeroOnly)
{
    add_devices(25);
    page(0);
    add_devices(2, 101);
    tree_.remove("25");
    page(1);
    EXPECT_EQ(output_, "");
    expect_page(1, 25, 0, {21, 22, 23, 24, 25});
    page(0);
    page(1);
    expect_page(1, 26, 0, {21, 22, 23, 24, 101, 102});
    tree_.remove_all();
    page(1);
    expect_page(1, 26, 0, {21, 22, 23, 24, 101, 102});
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 0, 0, {});
    expect_no_such_page(1, 0);
}

TEST_F(RawList, HandsOutALaterPageWithoutADriver)
{
    add_devices(25);
    page(0);
    fs::remove_all(tree_.allocations());
    page(1);
    EXPECT_EQ(output_, "");
    expect_page(1, 25, 0, {21, 22, 23, 24, 25});
}

TEST_F(RawList, IsSortedByTheSignedDevice)
{
    for (const char* device : {"7", "-1", "2147483647", "0", "-2147483648", "1", "-2147483647"}) {
        tree_.add(device, "device=" + std::string{device} + "\nsize=" + device + "\n");
    }
    page(0);
    EXPECT_EQ(output_, "");
    expect_page(0, 7, 0, {-2147483647 - 1, -2147483647, -1, 0, 1, 7, 2147483647});
}

TEST_F(RawList, HoldsEveryAllocationOfADeviceOnce)
{
    for (int handle = 1; handle <= 9; ++handle) {
        const std::string digit = std::to_string(handle);
        tree_.add(digit, "handle=" + digit + "\ndevice=" + std::to_string(handle % 2) + "\n");
    }
    page(0);
    ASSERT_EQ(buffer_.trasfer_cnt, 9);
    Numbers even;
    Numbers odd;
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(buffer_.records[i].device, i < 4 ? 0 : 1);
        (i < 4 ? even : odd).push_back(buffer_.records[i].handle);
    }
    std::ranges::sort(even);
    std::ranges::sort(odd);
    EXPECT_EQ(even, (Numbers{2, 4, 6, 8}));
    EXPECT_EQ(odd, (Numbers{1, 3, 5, 7, 9}));
    expect_untouched(9);
}

TEST_F(RawList, HandsOutEveryFieldOfAnAllocation)
{
    tree_.add("1",
              "handle=101\ndevice=2\nwidth=3\nheight=4\npitch=5\nbit_cnt=6\nsecured=7\nsize=8\n"
              "tile=9\ncpu_visible=10\ncache_type=11\npool_type=12\nat_type=13\nsegmentid=14\n"
              "hw_format=15\ncompress_format=16\nbl_slot_index=17\ngpu_virt_addr=18\n"
              "imported=19\nfb_offset=20\nshare=21\n");
    page(0);
    ASSERT_EQ(buffer_.trasfer_cnt, 1);
    EXPECT_EQ(buffer_.records[0], allocation(257));
}

TEST_F(RawList, TakesTheKindOfTheDriverFromTheRecordsSlot)
{
    tree_.add("1", "device=16\n");
    const std::int32_t current = std::exchange(current_is_va_driver, 1);
    for (const auto& [slot, va_drivers, device] :
         {std::tuple{0, std::array{1, 0, 0}, 16}, std::tuple{1, std::array{0, 1, 0}, 16},
          std::tuple{2, std::array{0, 0, -1}, 16}, std::tuple{0, std::array{0, 1, 1}, 22},
          std::tuple{1, std::array{1, 0, 1}, 22}, std::tuple{2, std::array{1, 1, 0}, 22}}) {
        current_is_va_driver = device == 16 ? 0 : 1;
        record_.chip_id_idx = slot;
        std::ranges::copy(va_drivers, record_.header.IS_VA_driver);
        page(0);
        EXPECT_EQ(buffer_.records[0].device, device) << "slot " << slot;
    }
    current_is_va_driver = current;
}

TEST_F(RawList, IsForwardedByTheEntryPoint)
{
    add_devices(45);
    page(0, get_allocation_raw_list);
    EXPECT_EQ(output_, "");
    expect_page(0, 45, 1, numbers(1, 20));
    page(2, get_allocation_raw_list);
    EXPECT_EQ(output_, "");
    expect_page(2, 45, 0, numbers(41, 45));
    page(3, get_allocation_raw_list);
    EXPECT_EQ(output_, kInvalidPage);
    expect_page(3, 45, 0, {});
    tree_.add_without_info("gone");
    page(0, get_allocation_raw_list);
    EXPECT_EQ(status_, -1);
    expect_untouched_buffer(0);
}

TEST_F(RawList, StaysWhenTheDriverCannotBeRead)
{
    add_devices(22);
    page(0);
    tree_.add_without_info("gone");
    take_pauses();
    page(0);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(take_pauses().size(), 10U);
    expect_untouched_buffer(0);
    page(1);
    EXPECT_EQ(output_, "");
    expect_page(1, 22, 0, {21, 22});
    fs::remove_all(tree_.allocations());
    page(0);
    EXPECT_EQ(status_, -1);
    expect_untouched_buffer(0);
    page(1);
    expect_page(1, 22, 0, {21, 22});
}

TEST_F(RawList, TellsOfAFailedReadAsTheReaderDoes)
{
    fs::remove(tree_.allocations());
    page(0);
    std::string expected;
    for (int pass = 0; pass < 10; ++pass) {
        expected += "Error opening directory\n";
    }
    EXPECT_EQ(output_, expected);
}

TEST_F(RawList, StaysWhenAnErrorOfAValueLeaves)
{
    add_devices(22);
    page(0);
    tree_.add("odd", "handle=80000000\n");
    EXPECT_THROW(page(0), std::out_of_range);
    expect_untouched_buffer(0);
    tree_.add("odd", "handle=-\n");
    EXPECT_THROW(page(0), std::invalid_argument);
    expect_untouched_buffer(0);
    page(1);
    expect_page(1, 22, 0, {21, 22});
}

TEST_F(RawList, HoldsAllocationsTwiceBehindAFailedPass)
{
    add_devices(2);
    const ListedAs listed{{"2", "1", "3"}};
    const DuringPauses pauses{[&] { add_devices(1, 3); }};
    page(0);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
    expect_page(0, 5, 0, {1, 1, 2, 2, 3});
}

TEST_F(RawList, LeavesNoDescriptorOpen)
{
    add_devices(21);
    const auto before = open_descriptors();
    page(0);
    page(1);
    page(2);
    tree_.add_without_info("gone");
    page(0);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(RawList, HandsOutAHundredThousandAllocations)
{
    std::vector<std::string> names;
    for (int i = 0; i < 20000; ++i) {
        for (const char* name : {"4", "2", "5", "1", "3"}) {
            names.emplace_back(name);
        }
    }
    add_devices(5);
    const ListedAs listed{names};
    for (std::int32_t index = 0; index < 5000; ++index) {
        page(index);
        expect_page(index, 100000, index < 4999 ? 1 : 0, Numbers(20, index / 1000 + 1));
        if (HasFailure()) {
            return;
        }
    }
    expect_no_such_page(5000, 100000);
}

}  // namespace
}  // namespace nimba::test
