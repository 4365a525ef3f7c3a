// SPDX-License-Identifier: MIT
// The pages of the raw list in any order, and the sums over the same records.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace nimba::fuzz {
namespace {

using Record = _GFX_ALLOCATION_INFO;
using Records = std::vector<Record>;

// What the next reading of the driver gives; nothing when it fails.
std::optional<Records>& driver()
{
    static std::optional<Records> records;
    return records;
}

bool is_less(const Record& a, const Record& b)
{
    return std::memcmp(&a, &b, sizeof a) < 0;
}

bool is_equal(const Record& a, const Record& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

Records in_any_order(Records records)
{
    std::ranges::sort(records, is_less);
    return records;
}

struct Page {
    int32_t status = 0;
    _GFX_ALLOCATION_RAW_LIST list;
};

Page ask(int32_t page)
{
    static find_adapter adapters{};
    Page answer;
    std::memset(&answer.list, 0xA5, sizeof answer.list);
    answer.list.page_index = page;
    answer.status = get_allocation_raw_list(&answer.list, &adapters);
    return answer;
}

// What is expected of a page of a list of so many records.
void check_page(const Page& page, int32_t index, std::size_t records)
{
    const auto count = static_cast<int64_t>(records);
    const int64_t first = int64_t{index} * RAW_LIST_BLOCK_MAX;
    const int64_t left = first >= 0 && first < count ? count - first : 0;
    check(page.status == 0 && page.list.page_index == index, "a page that was asked for comes");
    check(page.list.total_cnt == count, "a page tells how many records there are");
    check(page.list.trasfer_cnt == std::min<int64_t>(left, RAW_LIST_BLOCK_MAX),
          "a page has what is left, as far as it fits");
    check(page.list.more_flag == (left > RAW_LIST_BLOCK_MAX ? 1 : 0),
          "a page tells whether more is left");
    Record untouched;
    std::memset(&untouched, 0xA5, sizeof untouched);
    for (auto place = static_cast<std::size_t>(page.list.trasfer_cnt); place < RAW_LIST_BLOCK_MAX;
         ++place) {
        check(is_equal(page.list.records[place], untouched), "a page is written as far as it goes");
    }
}

// All pages together are the records, by device.
void check_all_pages(const Records& records)
{
    Records seen;
    int32_t index = 0;
    Page page;
    do {
        page = ask(index);
        check_page(page, index, records.size());
        seen.insert(seen.end(), page.list.records, page.list.records + page.list.trasfer_cnt);
        ++index;
    } while (page.list.more_flag == 1);
    check(std::ranges::is_sorted(seen, {}, &Record::device), "pages are sorted by device");
    check(std::ranges::equal(in_any_order(seen), in_any_order(records), is_equal),
          "pages have every record once");
}

template <typename Summary, typename Sum>
Summary sum_slowly(const Records& records)
{
    Summary summary{};
    std::size_t used = 0;
    for (const Record& record : records) {
        std::size_t entry = 0;
        while (entry < used && summary.entries[entry].device != record.device) {
            ++entry;
        }
        if (entry == ALLOCATION_SUMMARY_MAX - 1) {
            continue;
        }
        used = std::max(used, entry + 1);
        summary.entries[entry].device = record.device;
        if (record.segmentid >= 0) {
            summary.entries[entry].segment_size[std::min(record.segmentid, 4)] +=
                static_cast<Sum>(record.size);
        }
    }
    return summary;
}

void check_sums(const Records& records)
{
    _GFX_DEVICE_ALLOCATION_SUMMARY summary;
    std::memset(&summary, 0xA5, sizeof summary);
    check(get_device_allocation_summary_internal(&summary, 0, 0) == 0, "there is a summary");
    const auto expected = sum_slowly<_GFX_DEVICE_ALLOCATION_SUMMARY, uint32_t>(records);
    check(std::memcmp(&summary, &expected, sizeof summary) == 0, "sums add up");

    _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1 wide;
    std::memset(&wide, 0xA5, sizeof wide);
    check(get_device_allocation_summary_internal_ext1(&wide, 0, 0) == 0, "there is a wide summary");
    const auto wide_expected = sum_slowly<_GFX_DEVICE_ALLOCATION_SUMMARY_EXT1, int64_t>(records);
    check(std::memcmp(&wide, &wide_expected, sizeof wide) == 0, "wide sums add up");
}

void check_segments(const Records& records)
{
    std::array<int32_t, SEGMENT_SLOT_NUM> used{};
    check(get_segment_info_through_allocation(used.data(), 0, 0) == 0, "there are segments");
    std::array<double, SEGMENT_SLOT_NUM> sums{};
    for (const Record& record : records) {
        if (record.segmentid >= 0) {
            sums.at(static_cast<std::size_t>(std::min(record.segmentid, 4))) += record.size;
        }
    }
    for (std::size_t slot = 0; slot < used.size(); ++slot) {
        const double off = used[slot] - sums[slot] / 0x100000;
        check(off > -2.0 && off < 2.0, "segments are in mebibytes");
    }
}

Records take_records(std::string_view& input)
{
    Records records(take_byte(input) % 128);
    for (Record& record : records) {
        const uint8_t byte = take_byte(input);
        record.device = byte % 64 == 63 ? INT32_MIN : byte % 64;
        record.segmentid = byte / 32 - 1;
        record.size = (byte & 1U) != 0 ? INT32_MIN + byte : byte << 20U;
        record.handle = static_cast<int32_t>(&record - records.data());
    }
    return records;
}

}  // namespace

void try_input(std::string_view input)
{
    driver() = Records{};
    ask(0);
    std::size_t kept = 0;
    while (!input.empty()) {
        const uint8_t step = take_byte(input);
        if (step % 4 == 0) {
            driver() = take_records(input);
            kept = driver()->size();
            check_all_pages(*driver());
            check_sums(*driver());
            check_segments(*driver());
        } else if (step % 4 == 1) {
            driver().reset();
            const Page page = ask(0);
            check(page.status == -1 && page.list.total_cnt != 0, "a failed reading writes nothing");
        } else {
            const int32_t near = take_byte(input) % 10;
            const int32_t index = step % 4 == 2 ? near + 1 : take_number<int32_t>(input);
            check_page(ask(index == 0 ? 1 : index), index == 0 ? 1 : index, kept);
        }
    }
}

}  // namespace nimba::fuzz

// Instead of the library's.
int32_t get_current_allocation_data(std::vector<_GFX_ALLOCATION_INFO>& list, uint32_t /*chip_id*/,
                                    int32_t /*va_driver*/)
{
    const auto& records = nimba::fuzz::driver();
    list = records.value_or(nimba::fuzz::Records{});
    return records ? 0 : -1;
}
