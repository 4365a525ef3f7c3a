// SPDX-License-Identifier: MIT
// The memory in the segments, in mebibytes.
#include "allocation_tree.hpp"
#include "directory_listing.hpp"
#include "recorded_pauses.hpp"
#include "support/captured_stdout.hpp"
#include "support/descriptor.hpp"
#include "support/messages.hpp"
#include "support/scoped_print_callback.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

using Usage = std::array<std::int32_t, SEGMENT_SLOT_NUM>;

constexpr std::int64_t kMebibyte = 1048576;
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();

class SegmentUsage : public testing::Test {
  protected:
    SegmentUsage() { take_messages(); }

    void TearDown() override { EXPECT_EQ(take_messages(), Texts{}); }

    void add(const std::string& name, std::int32_t segment, std::int64_t size) const
    {
        tree_.add(name,
                  "segmentid=" + std::to_string(segment) + "\nsize=" + std::to_string(size) + "\n");
    }

    // Asks for the usage behind values that are not its own; fills values_, status_ and output_.
    Usage usage(std::int32_t va_driver = 1)
    {
        values_.fill(77);
        output_ = stdout_of(
            [&] { status_ = get_segment_info_through_allocation(values_.data(), 0, va_driver); });
        EXPECT_EQ(values_.back(), 77);
        return {values_[0], values_[1], values_[2], values_[3], values_[4]};
    }
    // The usage of segment 1 that allocations of these sizes, in this order, make up.
    std::int32_t usage_of(const std::vector<std::int64_t>& sizes)
    {
        std::vector<std::string> order;
        for (const std::int64_t size : sizes) {
            order.push_back(std::to_string(order.size()));
            add(order.back(), 1, size);
        }
        const ListedAs listed{order};
        const Usage values = usage();
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        EXPECT_EQ(values, (Usage{0, values[1], 0, 0, 0}));
        return values[1];
    }

    AllocationTree tree_;
    const ScopedPrintCallback callback_{keep_message};         // never called: messages are output
    std::array<std::int32_t, SEGMENT_SLOT_NUM + 1> values_{};  // and a guard
    std::int32_t status_ = 42;
    std::string output_;
};

std::vector<std::string> times(std::size_t count, const char* name)
{
    return std::vector<std::string>(count, name);
}

TEST_F(SegmentUsage, OfNoAllocationsIsZero)
{
    EXPECT_EQ(usage(), Usage{});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(SegmentUsage, OfADriverThatCannotBeReadIsZero)
{
    add("1", 0, 3 * kMebibyte);
    take_pauses();
    {
        const ListedAs listed{{"1", "gone"}};
        EXPECT_EQ(usage(), Usage{});
    }
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(take_pauses().size(), 10U);
    std::filesystem::remove_all(tree_.allocations());
    EXPECT_EQ(usage(), Usage{});
    EXPECT_EQ(status_, -1);
}

TEST_F(SegmentUsage, IsTheSumOfTheSegmentsSizes)
{
    add("1", 0, kMebibyte);
    add("2", 0, kMebibyte);
    add("3", 0, kMebibyte);
    EXPECT_EQ(usage(), (Usage{3, 0, 0, 0, 0}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(SegmentUsage, IsKeptApartBySegment)
{
    add("1", 0, kMebibyte);
    add("2", 1, 2 * kMebibyte);
    add("3", 2, 3 * kMebibyte);
    add("4", 3, 4 * kMebibyte);
    add("5", 4, 5 * kMebibyte);
    EXPECT_EQ(usage(), (Usage{1, 2, 3, 4, 5}));
}

TEST_F(SegmentUsage, OfEverySegmentAboveThreeIsInTheLastSlot)
{
    add("1", 4, kMebibyte);
    add("2", 5, 10 * kMebibyte);
    add("3", 7, 100 * kMebibyte);
    add("4", kHighest, 1000 * kMebibyte);
    EXPECT_EQ(usage(), (Usage{0, 0, 0, 0, 1111}));
}

TEST_F(SegmentUsage, HasNothingOfNegativeSegmentsAndNoMessage)
{
    add("1", -1, kMebibyte);
    add("2", kLowest, kMebibyte);
    add("3", -4, kMebibyte);
    EXPECT_EQ(usage(), Usage{});
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    add("4", 3, kMebibyte);
    EXPECT_EQ(usage(), (Usage{0, 0, 0, 1, 0}));
    EXPECT_EQ(output_, "");
}

TEST_F(SegmentUsage, IsRoundedTowardZero)
{
    EXPECT_EQ(usage_of({kMebibyte - 1}), 0);
    EXPECT_EQ(usage_of({kMebibyte}), 1);
    EXPECT_EQ(usage_of({2 * kMebibyte - 1}), 1);
    EXPECT_EQ(usage_of({1023}), 0);
    EXPECT_EQ(usage_of({kMebibyte + kMebibyte / 2}), 1);
    EXPECT_EQ(usage_of({kMebibyte / 2, kMebibyte / 2}), 1);
    EXPECT_EQ(usage_of({kMebibyte / 2, kMebibyte / 2 - 1}), 0);
}

TEST_F(SegmentUsage, IsRoundedTowardZeroBelowZeroToo)
{
    EXPECT_EQ(usage_of({-1}), 0);
    EXPECT_EQ(usage_of({1 - kMebibyte}), 0);
    EXPECT_EQ(usage_of({-kMebibyte}), -1);
    EXPECT_EQ(usage_of({-kMebibyte - kMebibyte / 2}), -1);
    EXPECT_EQ(usage_of({1 - 2 * kMebibyte}), -1);
    EXPECT_EQ(usage_of({kMebibyte, -3 * kMebibyte}), -2);
    EXPECT_EQ(usage_of({kLowest}), -2048);
}

TEST_F(SegmentUsage, CountsSizesOfTwoGigabytesAndMoreAsNegative)
{
    EXPECT_EQ(usage_of({2147483648}), -2048);
    EXPECT_EQ(usage_of({4293918720}), -1);
    EXPECT_EQ(usage_of({4294967296 + 5 * kMebibyte}), 5);
}

TEST_F(SegmentUsage, MayExceedFourGigabytes)
{
    EXPECT_EQ(usage_of({1073741824, 1073741824, 1073741824, 1073741824, 1073741824}), 5120);
}

TEST_F(SegmentUsage, RoundsASizeToSinglePrecision)
{
    EXPECT_EQ(usage_of({kHighest}), 2048);       // 2047.999999 MiB
    EXPECT_EQ(usage_of({kHighest - 63}), 2048);  // half a step below 2^31 goes to the even 2^31
    EXPECT_EQ(usage_of({kHighest - 64}), 2047);  // one byte less does not
    EXPECT_EQ(usage_of({67108863}), 64);         // 63.999999 MiB
    EXPECT_EQ(usage_of({16777215}), 15);         // 15.999999 MiB, the last that is kept exactly
}

TEST_F(SegmentUsage, LosesWhatIsSmallBesideALargeSum)
{
    // From 2^30 on sums are multiples of 128: 32 bytes more are nothing, 32768 times, too.
    add("large", 2, 1073741824);
    add("small", 2, 32);
    std::vector<std::string> order = times(32768, "small");
    order.insert(order.begin(), "large");
    {
        const ListedAs listed{order};
        EXPECT_EQ(usage(), (Usage{0, 0, 1024, 0, 0}));
    }
    order = times(32768, "small");
    order.emplace_back("large");
    const ListedAs listed{order};
    EXPECT_EQ(usage(), (Usage{0, 0, 1025, 0, 0}));
}

TEST_F(SegmentUsage, RoundsASumToTheNearest)
{
    // 96 of the 128 bytes of a step round up each time: 8192 times 128 are 1 MiB.
    add("large", 2, 1073741824);
    add("small", 2, 96);
    std::vector<std::string> order = times(8192, "small");
    order.insert(order.begin(), "large");
    const ListedAs listed{order};
    EXPECT_EQ(usage(), (Usage{0, 0, 1025, 0, 0}));
}

TEST_F(SegmentUsage, RoundsEachSizeBeforeItIsAdded)
{
    // The 64 bytes above 2^30 are lost each time; 16384 times they are 1 MiB.
    add("minus", 2, -1073741824);
    add("plus", 2, 1073741888);
    std::vector<std::string> order;
    for (int pair = 0; pair < 16384; ++pair) {
        order.insert(order.end(), {"minus", "plus"});
    }
    const ListedAs listed{order};
    EXPECT_EQ(usage(), Usage{});
}

TEST_F(SegmentUsage, KeepsTheRoundingOfOneSegmentFromTheOthers)
{
    add("large", 0, 1073741824);
    add("a", 1, 32);
    add("b", 2, 32);
    add("c", 3, 32);
    add("d", 9, 32);
    std::vector<std::string> order{"large"};
    for (int round = 0; round < 32768; ++round) {
        order.insert(order.end(), {"a", "b", "c", "d"});
    }
    const ListedAs listed{order};
    EXPECT_EQ(usage(), (Usage{1024, 1, 1, 1, 1}));
}

TEST_F(SegmentUsage, StaysAtTheHighestValueWhenASumExceedsIt)
{
    // 2^20 allocations of 2^31 bytes are 2^31 MiB.
    add("1", 0, kHighest);
    const ListedAs listed{times(1048576, "1")};
    EXPECT_EQ(usage(), (Usage{2147483647, 0, 0, 0, 0}));
}

TEST_F(SegmentUsage, StaysAtTheLowestValueWhenASumIsBelowIt)
{
    add("1", 4, kLowest);
    const ListedAs listed{times(1048577, "1")};
    EXPECT_EQ(usage(), (Usage{0, 0, 0, 0, kLowest}));
}

TEST_F(SegmentUsage, TakesTheKindOfTheDriver)
{
    tree_.add("1", "device=ff\nsize=1048576\n");
    EXPECT_EQ(usage(0), (Usage{1, 0, 0, 0, 0}));
    EXPECT_THROW(usage(1), std::invalid_argument);
    EXPECT_THROW(usage(-1), std::invalid_argument);
}

TEST_F(SegmentUsage, StaysUnwrittenWhenAnErrorOfAValueLeaves)
{
    constexpr std::array<std::int32_t, 6> kUnwritten{77, 77, 77, 77, 77, 77};
    add("1", 0, kMebibyte);
    tree_.add("odd", "handle=80000000\n");
    const ListedAs listed{{"1", "odd"}};
    EXPECT_THROW(usage(), std::out_of_range);
    EXPECT_EQ(values_, kUnwritten);
    tree_.add("odd", "device=none\n");
    EXPECT_THROW(usage(), std::invalid_argument);
    EXPECT_EQ(values_, kUnwritten);
}

TEST_F(SegmentUsage, CountsTwiceWhatAFailedPassHasRead)
{
    add("1", 0, kMebibyte);
    const ListedAs listed{{"1", "3"}};
    const DuringPauses pauses{[&] { add("3", 3, 5 * kMebibyte); }};
    EXPECT_EQ(usage(), (Usage{2, 0, 0, 5, 0}));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "Fail to read allocation info. skip...\n");
}

TEST_F(SegmentUsage, IsMadeAnewEachTime)
{
    add("1", 0, kMebibyte);
    EXPECT_EQ(usage(), (Usage{1, 0, 0, 0, 0}));
    EXPECT_EQ(usage(), (Usage{1, 0, 0, 0, 0}));
    tree_.remove_all();
    EXPECT_EQ(usage(), Usage{});
}

TEST_F(SegmentUsage, LeavesNoDescriptorOpen)
{
    add("1", 0, kMebibyte);
    const auto before = open_descriptors();
    usage();
    tree_.add_without_info("gone");
    usage();
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace
}  // namespace nimba::test
