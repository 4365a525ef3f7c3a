// SPDX-License-Identifier: MIT
// Video memory: allocations, device contexts and leaks.
#include "entry_point.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

using Records = std::vector<_GFX_ALLOCATION_INFO>;

std::string bytes_of_all(const Records& list)
{
    return {reinterpret_cast<const char*>(list.data()), list.size() * sizeof list.front()};
}

std::string told_list(const Records& list)
{
    std::string told = "handles";
    for (const _GFX_ALLOCATION_INFO& record : list) {
        told += " " + std::to_string(record.handle);
    }
    return told + ", " + checksum(bytes_of_all(list));
}

std::string told_record(const _GFX_ALLOCATION_INFO& record)
{
    return std::to_string(record.handle) + " of " + std::to_string(record.device) + ": " +
           std::to_string(record.width) + "x" + std::to_string(record.height) + ", " +
           std::to_string(record.size) + " bytes in " + std::to_string(record.segmentid);
}

template <std::int32_t (*read)(Records&, std::uint32_t, std::int32_t)>
Answer listed(Attempt& attempt)
{
    Answer answer;
    Records list;
    answer.status = attempt([&] { return read(list, 0, 1); });
    answer.bytes = bytes_of_all(list);
    answer.told = list.empty() ? "no handles" : told_list(list);
    return answer;
}

template <std::int32_t (*get)(_GFX_ALLOCATION_RAW_LIST*, const find_adapter*)>
Answer raw_list(Attempt& attempt)
{
    auto list = patterned<_GFX_ALLOCATION_RAW_LIST>();
    list.page_index = 0;
    return filled<_GFX_ALLOCATION_RAW_LIST>(
        attempt, [](auto& out) { return get(&out, &adapters); },
        [](const _GFX_ALLOCATION_RAW_LIST& out) {
            const auto last = static_cast<std::size_t>(std::clamp(out.trasfer_cnt, 1, 20) - 1);
            return std::to_string(out.total_cnt) + " records, " + std::to_string(out.trasfer_cnt) +
                   " of them here, more " + std::to_string(out.more_flag) + ", " +
                   told_record(out.records[0]) + " to " + told_record(out.records[last]) + ", " +
                   checksum(bytes_of(out));
        },
        list);
}

template <typename Summary>
std::string told_devices(const Summary& summary)
{
    std::string told;
    for (const auto& entry : summary.entries) {
        if (entry.device != 0) {
            told += (told.empty() ? "" : ", ") + std::to_string(entry.device) + ":";
            for (const auto size : entry.segment_size) {
                told += " " + std::to_string(size);
            }
        }
    }
    return told;
}

template <typename Summary, std::int32_t (*get)(Summary*)>
Answer summed(Attempt& attempt)
{
    return filled<Summary>(
        attempt, [](auto& out) { return get(&out); }, told_devices<Summary>);
}

template <typename Summary, std::int32_t (*get)(Summary*, std::uint32_t, std::int32_t)>
Answer summed_by_worker(Attempt& attempt)
{
    return filled<Summary>(
        attempt, [](auto& out) { return get(&out, 0, 1); }, told_devices<Summary>);
}

std::string told_processes(const _GFX_DEVICE_PID_MAP& map)
{
    std::string told;
    for (const gfx_device_pid& entry : map.entries) {
        if (entry.handle != 0) {
            told += (told.empty() ? "" : ", ") + std::to_string(entry.pid) + " \"" +
                    entry.process_name + "\"";
        }
    }
    return told;
}

Answer mapped(Attempt& attempt)
{
    return filled<_GFX_DEVICE_PID_MAP>(
        attempt, [](auto& out) { return get_device_pid_maps(&out); }, told_processes);
}

Answer mapped_by_worker(Attempt& attempt)
{
    return filled<_GFX_DEVICE_PID_MAP>(
        attempt, [](auto& out) { return get_device_pid_maps_internal(&out, 0, 1); },
        told_processes);
}

std::string told_segments(const std::array<std::int32_t, SEGMENT_SLOT_NUM>& sizes)
{
    std::string told;
    for (const std::int32_t size : sizes) {
        told += (told.empty() ? "" : " ") + std::to_string(size);
    }
    return told;
}

Answer used_segments(Attempt& attempt)
{
    return filled<std::array<std::int32_t, SEGMENT_SLOT_NUM>>(
        attempt,
        [](auto& sizes) { return get_segment_info_through_allocation(sizes.data(), 0, 1); },
        told_segments);
}

// A report depends on those before.
void forget_leaks()
{
    Records{}.swap(vec_memleak_result);
}

// The report and the list that the library keeps.
template <typename Call>
Answer leaks(Attempt& attempt, Call&& call)
{
    Answer answer = filled<_GFX_MEMLEAK_INFO>(attempt, call, [](const auto& report) {
        std::string told = "groups";
        for (const _GFX_ALLOCATION_INFO& group : report.groups) {
            if (group.sum_count > 0) {
                told += " (" + std::to_string(group.sum_count) + " as " + told_record(group) + ")";
            }
        }
        return told + ", kept " + told_list(vec_memleak_result);
    });
    answer.bytes += bytes_of_all(vec_memleak_result);
    return answer;
}

Answer leaks_found(Attempt& attempt)
{
    return leaks(attempt, [](auto& out) { return get_memleak_info(&out); });
}

Answer leaks_found_by_worker(Attempt& attempt)
{
    return leaks(attempt, [](auto& out) {
        get_memleak_information(&out, 0, 1);
        return 0;
    });
}

// Two lists that share half of their records.
std::pair<Records, Records> two_snapshots()
{
    std::pair<Records, Records> lists;
    _GFX_ALLOCATION_INFO record{};
    for (; record.handle < 40; ++record.handle) {
        (record.handle < 30 ? lists.first : lists.second).push_back(record);
        if (record.handle >= 10 && record.handle < 30) {
            lists.second.push_back(record);
        }
    }
    return lists;
}

Answer merged(Attempt& attempt)
{
    auto lists = two_snapshots();
    Records& snapshot = lists.first;
    Records& kept = lists.second;
    Answer answer;
    answer.untouched = bytes_of_all(snapshot) + bytes_of_all(kept);
    answer.status = attempt([&] { compare_memleak_list(snapshot, kept); });
    answer.bytes = bytes_of_all(snapshot) + bytes_of_all(kept);
    answer.told = "new " + told_list(snapshot) + ", kept " + told_list(kept);
    return answer;
}

Answer named(Attempt& attempt)
{
    return filled<std::array<char, 64>>(
        attempt,
        [](auto& name) { return getPackageNameFromPid(4100001, name.data(), sizeof name); },
        [](const auto& name) {
            return "\"" + std::string{name.data(), ::strnlen(name.data(), 16)} + "\"";
        });
}

using Summary = _GFX_DEVICE_ALLOCATION_SUMMARY;
using WideSummary = _GFX_DEVICE_ALLOCATION_SUMMARY_EXT1;

constexpr std::array kEntryPoints{
    EntryPoint{"get_current_allocation_data_try", 0, nullptr,
               listed<get_current_allocation_data_try>, false},
    EntryPoint{"get_current_allocation_data", 0, nullptr, listed<get_current_allocation_data>,
               false},
    EntryPoint{"get_allocation_raw_list", 0, nullptr, raw_list<get_allocation_raw_list>, false},
    EntryPoint{"get_allocation_raw_list_internal", 0, nullptr,
               raw_list<get_allocation_raw_list_internal>, false},
    EntryPoint{"get_device_allocation_summary", 0, nullptr,
               summed<Summary, get_device_allocation_summary>, false},
    EntryPoint{"get_device_allocation_summary_ext1", 0, nullptr,
               summed<WideSummary, get_device_allocation_summary_ext1>, false},
    EntryPoint{"get_device_allocation_summary_internal", 0, nullptr,
               summed_by_worker<Summary, get_device_allocation_summary_internal>, false},
    EntryPoint{"get_device_allocation_summary_internal_ext1", 0, nullptr,
               summed_by_worker<WideSummary, get_device_allocation_summary_internal_ext1>, false},
    EntryPoint{"get_segment_info_through_allocation", 0, nullptr, used_segments, false},
    EntryPoint{"get_device_pid_maps", 0, nullptr, mapped, false},
    EntryPoint{"get_device_pid_maps_internal", 0, nullptr, mapped_by_worker, false},
    EntryPoint{"getPackageNameFromPid", -1, nullptr, named, false},
    EntryPoint{"get_memleak_info", 0, forget_leaks, leaks_found, false},
    EntryPoint{"get_memleak_information", 0, forget_leaks, leaks_found_by_worker, false},
    without_calls(EntryPoint{"compare_memleak_list", -1, nullptr, merged, false}),
};

}  // namespace

std::span<const EntryPoint> memory_entry_points()
{
    return kEntryPoints;
}

}  // namespace nimba::test
