// SPDX-License-Identifier: MIT
// The allocation queries, from discovery on, of a machine with a QV M30, a Nimba K2 with a legacy
// driver, and a Nimba K1 with an allocation whose handle does not fit.
#include "machine_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace nimba::test {
namespace {

using Usage = std::array<std::int32_t, SEGMENT_SLOT_NUM>;
using List = std::vector<_GFX_ALLOCATION_INFO>;

enum Slot { kM30, kLegacyK2, kK1 };

class Allocations : public MachineTest {
  protected:
    ~Allocations() override { exit(record_.chip_id_idx); }

    void start(Slot slot)
    {
        discover();
        init(slot);
    }

    void page(std::int32_t index)
    {
        list_.page_index = index;
        output_ = stdout_of([&] {
            status_ = library_.symbol<decltype(get_allocation_raw_list)>("get_allocation_raw_list")(
                &list_, &record_);
        });
    }
    template <class Summary>
    void summarise(const char* function, Summary& summary)
    {
        output_ = stdout_of(
            [&] { status_ = library_.symbol<std::int32_t(Summary*)>(function)(&summary); });
    }
    Usage usage(std::int32_t va_driver)
    {
        Usage values{7, 7, 7, 7, 7};
        status_ = library_.symbol<decltype(get_segment_info_through_allocation)>(
            "get_segment_info_through_allocation")(values.data(), 0, va_driver);
        return values;
    }
    std::int32_t read(List& list, std::int32_t va_driver)
    {
        return library_.symbol<std::int32_t(List&, std::uint32_t, std::int32_t)>(
            "_Z27get_current_allocation_dataRSt6vectorI20_GFX_ALLOCATION_INFOSaIS0_EEji")(
            list, 0, va_driver);
    }

    // The devices of the last page.
    std::vector<std::int32_t> devices() const
    {
        std::vector<std::int32_t> found;
        found.reserve(RAW_LIST_BLOCK_MAX);
        for (std::int32_t i = 0; i < list_.trasfer_cnt; ++i) {
            found.push_back(list_.records[i].device);
        }
        return found;
    }

    _GFX_ALLOCATION_RAW_LIST list_{};
    std::int32_t status_ = 42;
};

TEST_F(Allocations, CannotBeReadBeforeAnAdapterIsCurrent)
{
    page(1);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "get_allocation_raw_list_internal, invalid trasfer_cnt !!!\n");
    EXPECT_EQ(list_.total_cnt, 0);
    EXPECT_EQ(list_.trasfer_cnt, 0);
    page(0);
    EXPECT_EQ(status_, -1);
    std::string ten_times;
    for (int pass = 0; pass < 10; ++pass) {
        ten_times += "Error opening directory\n";
    }
    EXPECT_EQ(output_, ten_times);
}

TEST_F(Allocations, ComeInTwoPagesSortedByDevice)
{
    start(kM30);
    page(0);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(list_.total_cnt, 22);
    EXPECT_EQ(list_.more_flag, 1);
    EXPECT_EQ(devices(), (std::vector<std::int32_t>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
                                                    20, 21, 22, 23, 24, 25, 26, 27, 28, 29}));
    const _GFX_ALLOCATION_INFO framebuffer{2147483647, 10, 1920, 1080, 7680, 32, 1, 8294400,
                                           2,          1,  3,    4,    5,    7,  6, 7,
                                           -1,         5,  8,    9,    10,   1,  1};
    EXPECT_EQ(std::memcmp(&list_.records[0], &framebuffer, sizeof framebuffer), 0);
    page(1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(list_.more_flag, 0);
    EXPECT_EQ(devices(), (std::vector<std::int32_t>{30, 99}));
    page(2);
    EXPECT_EQ(output_, "get_allocation_raw_list_internal, invalid trasfer_cnt !!!\n");
    EXPECT_EQ(list_.trasfer_cnt, 0);
}

TEST_F(Allocations, StayInTheListUntilItsFirstPageIsAskedForAgain)
{
    start(kM30);
    page(0);
    init(kLegacyK2);
    page(1);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(devices(), (std::vector<std::int32_t>{30, 99}));
    page(0);
    EXPECT_EQ(devices(), (std::vector<std::int32_t>{0x10, 0x1f, 0x1f}));
    page(1);
    EXPECT_EQ(output_, "get_allocation_raw_list_internal, invalid trasfer_cnt !!!\n");
}

TEST_F(Allocations, OfTheCurrentAdapterAreListedInTheWayOfTheRecordsSlot)
{
    start(kLegacyK2);
    record_.chip_id_idx = kM30;
    page(0);
    EXPECT_EQ(devices(), (std::vector<std::int32_t>{1, 1, 10}));
}

TEST_F(Allocations, AreSummedByDevice)
{
    start(kLegacyK2);
    _GFX_DEVICE_ALLOCATION_SUMMARY summary;
    std::memset(&summary, 0xa5, sizeof summary);
    summarise("get_device_allocation_summary", summary);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    // Entries come in the order in which the system lists the directory.
    std::sort(summary.entries, summary.entries + 2,
              [](const auto& a, const auto& b) { return a.device < b.device; });
    const _GFX_DEVICE_ALLOCATION_SUMMARY expected{
        {{0x10, {0, 0, 0, 4294963200, 0}}, {0x1f, {0, 3145728, 0, 0, 0}}}};
    EXPECT_EQ(std::memcmp(&summary, &expected, sizeof expected), 0);
}

TEST_F(Allocations, AreSummedByDeviceInWideSums)
{
    start(kLegacyK2);
    _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1 summary;
    std::memset(&summary, 0xa5, sizeof summary);
    summarise("get_device_allocation_summary_ext1", summary);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    std::sort(summary.entries, summary.entries + 2,
              [](const auto& a, const auto& b) { return a.device < b.device; });
    const _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1 expected{
        {{0x10, 0, {0, 0, 0, -4096, 0}}, {0x1f, 0, {0, 3145728, 0, 0, 0}}}};
    EXPECT_EQ(std::memcmp(&summary, &expected, sizeof expected), 0);
}

TEST_F(Allocations, OfAnInvalidSegmentAreReported)
{
    start(kM30);
    _GFX_DEVICE_ALLOCATION_SUMMARY summary;
    summarise("get_device_allocation_summary", summary);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "invalid segmentid !!! \n");
    EXPECT_EQ(summary.entries[22].device, 0);
    EXPECT_TRUE(std::ranges::any_of(summary.entries, [](const gfx_device_allocation& entry) {
        return entry.device == 99 && std::ranges::count(entry.segment_size, 0U) == 5;
    }));
}

TEST_F(Allocations, AreSummedBySegment)
{
    start(kM30);
    EXPECT_EQ(usage(1), (Usage{20, 0, 0, 0, 7}));
    EXPECT_EQ(status_, 0);
    init(kLegacyK2);
    EXPECT_EQ(usage(0), (Usage{0, 3, 0, 0, 0}));
    EXPECT_EQ(status_, 0);
}

TEST_F(Allocations, AreReadByAHostInCpp)
{
    start(kM30);
    List list(1);
    EXPECT_EQ(read(list, 1), 0);
    EXPECT_EQ(list.size(), 23U);
    EXPECT_EQ(list.front().sum_count, 0);
    EXPECT_EQ(std::ranges::count(list, 1, &_GFX_ALLOCATION_INFO::sum_count), 22);
}

TEST_F(Allocations, LetAnErrorOfAValueThroughTheLibrary)
{
    start(kM30);
    page(0);
    init(kK1);
    EXPECT_THROW(page(0), std::out_of_range);
    EXPECT_THROW(usage(1), std::out_of_range);
    List list;
    EXPECT_THROW(read(list, 1), std::out_of_range);
    page(1);
    EXPECT_EQ(devices(), (std::vector<std::int32_t>{30, 99}));
}

TEST_F(Allocations, AreSummedToZeroBeforeAnAdapterIsCurrent)
{
    _GFX_DEVICE_ALLOCATION_SUMMARY summary;
    std::memset(&summary, 0xa5, sizeof summary);
    summarise("get_device_allocation_summary", summary);
    EXPECT_EQ(status_, -1);
    const _GFX_DEVICE_ALLOCATION_SUMMARY zero{};
    EXPECT_EQ(std::memcmp(&summary, &zero, sizeof zero), 0);
    Usage values{};
    EXPECT_EQ(stdout_of([&] { values = usage(1); }), output_);
    EXPECT_EQ(values, Usage{});
    EXPECT_EQ(status_, -1);
}

TEST_F(Allocations, AreReadWithoutAMessageToTheCallbackOrAnOpenFileLeft)
{
    const OpenFiles no_files = open_files();
    page(0);
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(open_files(), no_files);
    start(kM30);
    take_messages();
    OpenFiles files = open_files();
    page(0);
    page(1);
    usage(1);
    EXPECT_EQ(open_files(), files);
    EXPECT_EQ(take_messages(), Texts{});
    init(kK1);
    files = open_files();
    EXPECT_THROW(page(0), std::out_of_range);
    EXPECT_EQ(open_files(), files);
}

}  // namespace
}  // namespace nimba::test
