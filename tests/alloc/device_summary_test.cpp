// SPDX-License-Identifier: MIT
// The memory of the devices, in sums of either width.
#include "allocation_tree.hpp"
#include "core/current_adapter.hpp"
#include "device_summary_fixture.hpp"
#include "directory_listing.hpp"
#include "recorded_pauses.hpp"
#include "support/descriptor.hpp"

#include <filesystem>
#include <limits>
#include <stdexcept>
#include <utility>

namespace nimba::test {
namespace {

template <class Width>
using DeviceSummary = DeviceSummaryTest<Width>;

TYPED_TEST_SUITE(DeviceSummary, SummaryWidths, NameOfWidth);

TYPED_TEST(DeviceSummary, OfNoAllocationsIsZero)
{
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    EXPECT_EQ(this->output_, "");
    EXPECT_EQ(this->entries(0), Entries{});
}

TYPED_TEST(DeviceSummary, OfADriverThatCannotBeReadIsZero)
{
    this->add("1", 5, 0, 100);
    take_pauses();
    {
        const ListedAs listed{{"1", "gone"}};
        this->summarise();
    }
    EXPECT_EQ(this->status_, -1);
    EXPECT_EQ(take_pauses().size(), 10U);
    EXPECT_EQ(this->entries(0), Entries{});
    std::filesystem::remove_all(this->tree_.allocations());
    this->summarise();
    EXPECT_EQ(this->status_, -1);
    EXPECT_EQ(this->entries(0), Entries{});
}

TYPED_TEST(DeviceSummary, IsZeroWhenAnErrorOfAValueLeaves)
{
    this->tree_.add("1", "handle=80000000\n");
    EXPECT_THROW(this->summarise(), std::out_of_range);
    EXPECT_EQ(this->entries(0), Entries{});
    this->tree_.add("1", "device=none\n");
    EXPECT_THROW(this->summarise(), std::invalid_argument);
    EXPECT_EQ(this->entries(0), Entries{});
}

TYPED_TEST(DeviceSummary, OfTheEntryPointIsZeroWhenAnErrorOfAValueLeaves)
{
    this->tree_.add("1", "handle=80000000\n");
    EXPECT_THROW(this->summarise_current(), std::out_of_range);
    EXPECT_EQ(this->entries(0), Entries{});
    this->tree_.add("1", "device=none\n");
    EXPECT_THROW(this->summarise_current(), std::invalid_argument);
    EXPECT_EQ(this->entries(0), Entries{});
}

TYPED_TEST(DeviceSummary, SumsTheSizesBySegment)
{
    this->add("1", 7, 0, 1);
    this->add("2", 7, 1, 20);
    this->add("3", 7, 2, 300);
    this->add("4", 7, 3, 4000);
    this->add("5", 7, 4, 50000);
    this->add("6", 7, 0, 1000000);
    this->add("7", 7, 3, 2000000);
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    EXPECT_EQ(this->output_, "");
    EXPECT_EQ(this->entries(1), (Entries{{7, {1000001, 20, 300, 2004000, 50000}}}));
}

TYPED_TEST(DeviceSummary, CountsEverySegmentFromFourOnInTheLastSlot)
{
    this->add("1", 7, 4, 1);
    this->add("2", 7, 5, 20);
    this->add("3", 7, 7, 300);
    this->add("4", 7, 1000000, 4000);
    this->add("5", 7, std::numeric_limits<std::int32_t>::max(), 50000);
    this->summarise();
    EXPECT_EQ(this->output_, "");
    EXPECT_EQ(this->entries(1), (Entries{{7, {0, 0, 0, 0, 54321}}}));
}

TYPED_TEST(DeviceSummary, CountsAnAllocationThatTellsNoSegmentInTheFirst)
{
    this->tree_.add("1", "size=5\n");
    this->summarise();
    EXPECT_EQ(this->entries(1), (Entries{{0, {5, 0, 0, 0, 0}}}));
}

TYPED_TEST(DeviceSummary, KeepsTheDevicesApart)
{
    this->add("1", 1, 0, 10);
    this->add("2", -1, 1, 20);
    this->add("3", 0, 2, 30);
    this->add("4", 1, 3, 40);
    this->add("5", 0, 2, 50);
    this->add("6", -1, 1, -60);
    this->add("7", 2147483647, 4, 70);
    const ListedAs listed{{"2", "1", "7", "3", "4", "5", "6"}};
    this->summarise();
    EXPECT_EQ(this->output_, "");
    const std::int64_t wrapped = this->kWide ? -40 : 4294967256;
    EXPECT_EQ(this->entries(4), (Entries{{-1, {0, wrapped, 0, 0, 0}},
                                         {1, {10, 0, 0, 40, 0}},
                                         {2147483647, {0, 0, 0, 0, 70}},
                                         {0, {0, 0, 80, 0, 0}}}));
}

TYPED_TEST(DeviceSummary, ListsTheDevicesInTheOrderInWhichTheyAreMet)
{
    this->add("1", 1, 0, 1);
    this->add("2", 2, 0, 2);
    this->add("3", 3, 0, 4);
    this->add("4", 1, 0, 8);
    const std::vector<std::pair<std::vector<std::string>, Entries>> rows{
        {{"1", "2", "3", "4"}, {{1, {9}}, {2, {2}}, {3, {4}}}},
        {{"3", "4", "2", "1"}, {{3, {4}}, {1, {9}}, {2, {2}}}},
        {{"2", "3", "2", "3"}, {{2, {4}}, {3, {8}}}}};
    for (const auto& [order, expected] : rows) {
        const ListedAs listed{order};
        this->summarise();
        EXPECT_EQ(this->entries(expected.size()), expected);
    }
}

TYPED_TEST(DeviceSummary, TakesNoUnusedEntryForThatOfDeviceZero)
{
    this->add("1", 5, 1, 10);
    this->add("2", 0, 1, 20);
    this->add("3", 6, 1, 30);
    const ListedAs listed{{"1", "2", "3", "2"}};
    this->summarise();
    EXPECT_EQ(this->entries(3),
              (Entries{{5, {0, 10, 0, 0, 0}}, {0, {0, 40, 0, 0, 0}}, {6, {0, 30, 0, 0, 0}}}));
}

TYPED_TEST(DeviceSummary, LeavesOutNegativeSegmentsWithAMessageForEach)
{
    this->add("1", 7, -1, 100);
    this->add("2", 7, std::numeric_limits<std::int32_t>::min(), 200);
    this->add("3", 7, 0, 5);
    this->add("4", 8, -4, 400);
    const ListedAs listed{{"1", "3", "2", "4"}};
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    EXPECT_EQ(this->output_,
              "invalid segmentid !!! \ninvalid segmentid !!! \n"
              "invalid segmentid !!! \n");
    EXPECT_EQ(this->entries(2), (Entries{{7, {5, 0, 0, 0, 0}}, {8, {0, 0, 0, 0, 0}}}));
}

TYPED_TEST(DeviceSummary, GivesADeviceOfInvalidSegmentsItsPlaceInTheOrder)
{
    this->add("1", 7, -1, 100);
    this->add("2", 8, 0, 1);
    this->add("3", 7, 2, 3);
    const ListedAs listed{{"1", "2", "3"}};
    this->summarise();
    EXPECT_EQ(this->output_, "invalid segmentid !!! \n");
    EXPECT_EQ(this->entries(2), (Entries{{7, {0, 0, 3, 0, 0}}, {8, {1, 0, 0, 0, 0}}}));
}

TYPED_TEST(DeviceSummary, HasAnEntryForEachOf49Devices)
{
    const ListedAs listed{this->add_devices(49)};
    this->summarise();
    EXPECT_EQ(this->output_, "");
    EXPECT_EQ(this->entries(49), entries_of_devices(49));
}

TYPED_TEST(DeviceSummary, HasNoEntryForTheFiftiethDevice)
{
    const ListedAs listed{this->add_devices(50)};
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    EXPECT_EQ(this->output_, "exceed ALLOCATION_SUMMARY_MAX !!! \n");
    EXPECT_EQ(this->entries(49), entries_of_devices(49));
}

TYPED_TEST(DeviceSummary, TellsOfEachAllocationThatIsLeftOut)
{
    std::vector<std::string> order = this->add_devices(60);
    order.insert(order.end(), {"60", "1", "50", "49", "60"});
    const ListedAs listed{order};
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    std::string expected;
    for (int message = 0; message < 11 + 3; ++message) {
        expected += "exceed ALLOCATION_SUMMARY_MAX !!! \n";
    }
    EXPECT_EQ(this->output_, expected);
    Entries found = entries_of_devices(49);
    found.front().sums[0] = 2;
    found.back().sums[0] = 98;
    EXPECT_EQ(this->entries(49), found);
}

TYPED_TEST(DeviceSummary, TellsOfAnAllocationThatIsLeftOutOnlyOnce)
{
    const std::vector<std::string> order = this->add_devices(50);
    this->add("50", 50, -1, 5);
    const ListedAs listed{order};
    this->summarise();
    EXPECT_EQ(this->output_, "exceed ALLOCATION_SUMMARY_MAX !!! \n");
    EXPECT_EQ(this->entries(49), entries_of_devices(49));
}

TYPED_TEST(DeviceSummary, TellsOfItsTroublesInTheOrderOfTheAllocations)
{
    std::vector<std::string> order = this->add_devices(50);
    this->add("bad", 3, -1, 5);
    order.insert(order.end(), {"bad", "50", "bad"});
    const ListedAs listed{order};
    this->summarise();
    EXPECT_EQ(this->output_,
              "exceed ALLOCATION_SUMMARY_MAX !!! \ninvalid segmentid !!! \n"
              "exceed ALLOCATION_SUMMARY_MAX !!! \ninvalid segmentid !!! \n");
    EXPECT_EQ(this->entries(49), entries_of_devices(49));
}

TYPED_TEST(DeviceSummary, ReadsTheDeviceByTheKindOfTheDriver)
{
    this->tree_.add("1", "device=16\nsize=5\n");
    for (const auto& [va_driver, device] :
         {std::pair{1, 16}, std::pair{-1, 16}, std::pair{256, 16}, std::pair{0, 22}}) {
        this->summarise(va_driver);
        EXPECT_EQ(this->entries(1), (Entries{{device, {5, 0, 0, 0, 0}}}));
    }
}

TYPED_TEST(DeviceSummary, OfTheEntryPointIsThatOfTheCurrentAdapter)
{
    this->tree_.add("1", "device=16\nsize=5\n");
    const std::int32_t before = current_is_va_driver;
    for (const auto& [va_driver, device] : {std::pair{1, 16}, std::pair{0, 22}, std::pair{2, 16}}) {
        current_is_va_driver = va_driver;
        this->summarise_current();
        EXPECT_EQ(this->status_, 0);
        EXPECT_EQ(this->entries(1), (Entries{{device, {5, 0, 0, 0, 0}}}));
    }
    current_is_va_driver = before;
    this->tree_.add_without_info("gone");
    this->summarise_current();
    EXPECT_EQ(this->status_, -1);
    EXPECT_EQ(this->entries(0), Entries{});
}

TYPED_TEST(DeviceSummary, CountsTwiceWhatAFailedPassHasRead)
{
    this->add("1", 1, 0, 10);
    this->add("2", 2, 0, 20);
    const ListedAs listed{{"1", "3", "2"}};
    const DuringPauses pauses{[&] { this->add("3", 3, 0, 30); }};
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    EXPECT_EQ(this->output_, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(this->entries(3), (Entries{{1, {20}}, {3, {30}}, {2, {20}}}));
}

TYPED_TEST(DeviceSummary, IsMadeAnewEachTime)
{
    this->add("1", 1, 0, 10);
    this->summarise();
    this->summarise();
    EXPECT_EQ(this->entries(1), (Entries{{1, {10}}}));
    this->tree_.remove_all();
    this->add("2", 2, 1, 20);
    this->summarise();
    EXPECT_EQ(this->entries(1), (Entries{{2, {0, 20}}}));
}

TYPED_TEST(DeviceSummary, LeavesNoDescriptorOpen)
{
    this->add("1", 1, 0, 10);
    const auto before = open_descriptors();
    this->summarise();
    this->tree_.add_without_info("gone");
    this->summarise();
    EXPECT_EQ(open_descriptors(), before);
}

TYPED_TEST(DeviceSummary, SumsAHundredThousandAllocations)
{
    this->add("1", 1, 0, 1000);
    this->add("2", 2, 9, 3);
    std::vector<std::string> order;
    for (int pair = 0; pair < 50000; ++pair) {
        order.insert(order.end(), {"2", "1"});
    }
    const ListedAs listed{order};
    this->summarise();
    EXPECT_EQ(this->status_, 0);
    EXPECT_EQ(this->entries(2), (Entries{{2, {0, 0, 0, 0, 150000}}, {1, {50000000}}}));
}

}  // namespace
}  // namespace nimba::test
