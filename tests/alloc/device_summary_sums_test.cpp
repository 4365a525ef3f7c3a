// SPDX-License-Identifier: MIT
// What the sums of either width do with sizes that 32 bits do not hold.
#include "device_summary_fixture.hpp"
#include "directory_listing.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace nimba::test {
namespace {

// The sizes of a device's allocations in one segment, and their sums.
struct Sizes {
    const char* name;
    std::vector<std::int64_t> sizes;  // as the driver writes them
    std::int64_t sum32;
    std::int64_t sum64;
};

const std::vector<Sizes>& rows()
{
    static const std::vector<Sizes> kRows{
        {"Negative", {-100}, 4294967196, -100},
        {"NegativeBehindPositive", {1000, -1}, 999, 999},
        {"BelowZero", {1, -3}, 4294967294, -2},
        {"ThreeTimesTheHighest", {2147483647, 2147483647, 2147483647}, 2147483645, 6442450941},
        {"ExactlyFourGigabytes", {1073741824, 1073741824, 1073741824, 1073741824}, 0, 4294967296},
        {"Lowest", {-2147483648}, 2147483648, -2147483648},
        {"TwiceTheLowest", {-2147483648, -2147483648}, 0, -4294967296},
        {"AboveTheHighest", {2147483648}, 2147483648, -2147483648},
        {"HighestUnsigned", {4294967295}, 4294967295, -1},
        {"OfMoreThan32Bits", {4294967301}, 5, 5},
    };
    return kRows;
}

template <class Width>
using DeviceSums = DeviceSummaryTest<Width>;

TYPED_TEST_SUITE(DeviceSums, SummaryWidths, NameOfWidth);

TYPED_TEST(DeviceSums, WrapIn32BitsAndAreSignedIn64)
{
    for (const Sizes& row : rows()) {
        this->tree_.remove_all();
        std::int64_t number = 0;
        for (const std::int64_t size : row.sizes) {
            this->add(std::to_string(number++), 1, 2, size);
        }
        this->summarise();
        EXPECT_EQ(this->output_, "") << row.name;
        EXPECT_EQ(this->entries(1),
                  (Entries{{1, {0, 0, this->kWide ? row.sum64 : row.sum32, 0, 0}}}))
            << row.name;
    }
}

TYPED_TEST(DeviceSums, OfOneSegmentDoNotCarryIntoTheNext)
{
    for (const char* segment : {"0", "1", "2", "3", "4"}) {
        this->tree_.add(segment, "device=1\nsize=-1\nsegmentid=" + std::string{segment} + "\n");
    }
    const ListedAs listed{{"0", "1", "2", "3", "4", "4", "3", "2", "1", "0"}};
    this->summarise();
    const std::int64_t sum = this->kWide ? -2 : 4294967294;
    EXPECT_EQ(this->entries(1), (Entries{{1, {sum, sum, sum, sum, sum}}}));
}

}  // namespace
}  // namespace nimba::test
