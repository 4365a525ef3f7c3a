// SPDX-License-Identifier: MIT
// Merging snapshots of allocations, and reporting them, against the search from the first record on
// that defines it.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>

namespace nimba::fuzz {
namespace {

using Record = _GFX_ALLOCATION_INFO;
using Records = std::vector<Record>;

constexpr std::size_t kMostRecords = 100;

// What the next reading of the driver gives; nothing when it fails.
std::optional<Records>& next_snapshot()
{
    static std::optional<Records> snapshot;
    return snapshot;
}

bool is_alike(const Record& a, const Record& b)
{
    return a.width == b.width && a.height == b.height && a.size == b.size &&
           a.hw_format == b.hw_format && a.at_type == b.at_type;
}

bool is_same_allocation(const Record& a, const Record& b)
{
    return a.handle == b.handle && is_alike(a, b);
}

bool is_equal(const Record& a, const Record& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void merge_slowly(Records& snapshot, Records& kept)
{
    for (auto record = kept.begin(); record != kept.end();) {
        const auto found = std::ranges::find_if(
            snapshot, [&](const Record& other) { return is_same_allocation(other, *record); });
        if (found == snapshot.end()) {
            record = kept.erase(record);
            continue;
        }
        ++record->hit_count;
        ++record;
        snapshot.erase(found);
    }
    kept.insert(kept.end(), snapshot.begin(), snapshot.end());
}

Records group_slowly(const Records& kept)
{
    Records groups;
    for (const Record& record : kept) {
        const auto group = std::ranges::find_if(
            groups, [&](const Record& other) { return is_alike(other, record); });
        if (group == groups.end()) {
            groups.push_back(record);
        } else {
            ++group->sum_count;
        }
    }
    return groups;
}

// Groups of one size may come in any order.
void check_report(const _GFX_MEMLEAK_INFO& report, const Records& kept)
{
    const Records groups = group_slowly(kept);
    std::vector<int32_t> sizes;
    std::ranges::transform(groups, std::back_inserter(sizes), &Record::sum_count);
    std::ranges::sort(sizes, std::greater{});
    sizes.resize(MEMLEAK_REPORT_MAX);  // with zeros
    std::vector<bool> is_reported(groups.size());
    for (std::size_t index = 0; index < MEMLEAK_REPORT_MAX; ++index) {
        const Record& record = report.groups[index];
        check(record.sum_count == sizes[index], "the largest groups are reported, largest first");
        if (index >= groups.size()) {
            check(is_equal(record, Record{}), "there is nothing behind the groups");
            continue;
        }
        const auto group = std::ranges::find_if(
            groups, [&](const Record& other) { return is_equal(other, record); });
        check(group != groups.end(), "a group is reported as its first record");
        const auto place = static_cast<std::size_t>(group - groups.begin());
        check(!is_reported[place], "a group is reported once");
        is_reported[place] = true;
    }
}

// Few values, so that records are often alike.
Record take_record(std::string_view& input)
{
    const uint8_t shape = take_byte(input);
    const uint8_t name = take_byte(input);
    Record record{};
    record.handle = name % 16;
    record.device = name / 16;
    record.width = (shape & 3U) == 3 ? INT32_MIN : (shape & 3U);
    record.height = (shape >> 2U) & 3U;
    record.size = (shape & 0x10U) != 0 ? -1 : 4096;
    record.hw_format = (shape >> 5U) & 1U;
    record.at_type = (shape >> 6U) & 3U;
    record.hit_count = 1;
    record.sum_count = 1;
    return record;
}

// A snapshot begins with a byte that tells how much of the one before it stays, and one that tells
// how many records are new.
Records take_snapshot(std::string_view& input, const Records& before)
{
    const std::size_t dropped = take_byte(input) % 8;
    const std::size_t fresh = take_byte(input) % 24;
    Records snapshot;
    for (std::size_t index = 0; index < before.size(); ++index) {
        if (dropped == 0 || index % (dropped + 1) != 0) {
            snapshot.push_back(before[index]);
        }
    }
    for (std::size_t index = 0; index < fresh; ++index) {
        const auto place = static_cast<std::ptrdiff_t>(
            snapshot.empty() ? 0 : take_byte(input) % (snapshot.size() + 1));
        snapshot.insert(snapshot.begin() + place, take_record(input));
    }
    snapshot.resize(std::min(snapshot.size(), kMostRecords));
    return snapshot;
}

void check_query(const Records& kept)
{
    _GFX_MEMLEAK_INFO report;
    std::memset(&report, 0xA5, sizeof report);
    const _GFX_MEMLEAK_INFO before = report;
    get_memleak_information(&report, 0, 0);
    check(std::ranges::equal(vec_memleak_result, kept, is_equal),
          "the kept list is that of the slow search");
    if (next_snapshot()) {
        check_report(report, kept);
    } else {
        check(std::memcmp(&report, &before, sizeof report) == 0, "a failed reading tells nothing");
    }
}

}  // namespace

void try_input(std::string_view input)
{
    vec_memleak_result.clear();
    Records kept;
    Records snapshot;
    while (!input.empty()) {
        const bool fails = take_byte(input) % 16 == 15;
        next_snapshot().reset();
        if (!fails) {
            snapshot = take_snapshot(input, snapshot);
            next_snapshot() = snapshot;
            Records rest = snapshot;
            merge_slowly(rest, kept);
        }
        check_query(kept);
    }
}

}  // namespace nimba::fuzz

// Instead of the library's.
int32_t get_current_allocation_data(std::vector<_GFX_ALLOCATION_INFO>& list, uint32_t /*chip_id*/,
                                    int32_t /*va_driver*/)
{
    const auto& snapshot = nimba::fuzz::next_snapshot();
    list = snapshot.value_or(nimba::fuzz::Records{});
    return snapshot ? 0 : -1;
}
