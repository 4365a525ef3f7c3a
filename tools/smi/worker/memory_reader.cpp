// SPDX-License-Identifier: MIT
#include "tools/smi/worker/memory_reader.hpp"

#include "tools/smi/worker/driver_directory.hpp"
#include "tools/smi/worker/driver_numbers.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace nimba::smi {
namespace {

constexpr const char* kRawList = "get_allocation_raw_list";
constexpr const char* kPidMaps = "get_device_pid_maps";
constexpr const char* kMemleak = "get_memleak_info";

constexpr const char* kInfoNode = "info";

// A context may close while the list is read, and the library does not try again.
constexpr int kMapTries = 10;
constexpr useconds_t kMapPause = 5'000;  // microseconds

// Page 0 reads the driver, the others are from the same reading. Returns the library's status.
int32_t read_pages(Session& session, std::vector<Allocation>& allocations)
{
    const auto get = session.library().entry.get_allocation_raw_list;
    _GFX_ALLOCATION_RAW_LIST page{};
    do {
        page.more_flag = 0;
        page.trasfer_cnt = 0;
        if (const int32_t status = get(&page, &session.adapters()); status < 0) {
            return status;
        }
        const auto count = std::clamp<int32_t>(page.trasfer_cnt, 0, RAW_LIST_BLOCK_MAX);
        std::copy_n(page.records, count, std::back_inserter(allocations));
        ++page.page_index;
    } while (page.more_flag == 1);
    return 0;
}

// All of the buffer is written on success, and none of it when the driver could not be read: no
// report has bytes like these.
constexpr int kUnwritten = 0xFF;

bool is_written(const _GFX_MEMLEAK_INFO& report)
{
    _GFX_MEMLEAK_INFO unwritten;
    std::memset(&unwritten, kUnwritten, sizeof unwritten);
    return std::memcmp(&report, &unwritten, sizeof report) != 0;
}

// Fills the map. Returns the library's status of the last try.
int32_t read_map(Session& session, _GFX_DEVICE_PID_MAP& map)
{
    const auto get = session.library().entry.get_device_pid_maps;
    int32_t status = -1;
    for (int tries = 0; tries < kMapTries && status < 0; ++tries) {
        if (tries > 0) {
            ::usleep(kMapPause);
        }
        status = get(&map);
    }
    return status;
}

bool is_used(const gfx_device_pid& entry)
{
    return entry.pid != 0 || entry.handle != 0 || entry.process_name[0] != '\0';
}

DeviceContext context_of(const gfx_device_pid& entry)
{
    return {unsigned_bits(entry.handle),
            entry.pid,
            {entry.process_name, ::strnlen(entry.process_name, sizeof entry.process_name)}};
}

// The map ends with its last entry, whether or not there are more contexts.
std::optional<Failure> beyond_the_map(Session& session, const std::string& directory)
{
    const auto count = session.call("open " + directory, [&] { return entries_in(directory); });
    if (count <= ALLOCATION_SUMMARY_MAX) {
        return std::nullopt;
    }
    return Failure{ExitStatus::kOk, kPidMaps,
                   fmt::format("{} device contexts are open, of which the library tells {}: the "
                               "processes of the others are not known",
                               count, ALLOCATION_SUMMARY_MAX)};
}

}  // namespace

std::variant<std::vector<Allocation>, Failure> read_allocations(Session& session,
                                                                const std::string& debug_directory)
{
    std::vector<Allocation> allocations;
    int32_t status = 0;
    const auto read = [&] {
        return with_numbers(kRawList, kAllocationNumber,
                            [&] { status = read_pages(session, allocations); });
    };
    const auto bad = session.call(kRawList, read, reading_time(session, debug_directory));
    if (bad) {
        return *bad;
    }
    if (status < 0) {
        return no_allocations(session, kRawList, debug_directory);
    }
    drop_repeated(allocations);
    return allocations;
}

std::variant<std::vector<Allocation>, Failure> read_leaks(Session& session,
                                                          const std::string& debug_directory)
{
    const EntryPoints& entry = session.library().entry;
    _GFX_MEMLEAK_INFO report;
    std::memset(&report, kUnwritten, sizeof report);
    const auto read = [&] {
        return with_numbers(kMemleak, kAllocationNumber, [&] { entry.get_memleak_info(&report); });
    };
    const auto bad = session.call(kMemleak, read, reading_time(session, debug_directory));
    if (bad) {
        return *bad;
    }
    if (!is_written(report)) {
        return no_allocations(session, kMemleak, debug_directory);
    }
    std::vector<Allocation> allocations = *entry.vec_memleak_result;
    drop_repeated(allocations);
    return allocations;
}

void read_contexts(Session& session, const std::string& debug_directory, ReadingBase& reading)
{
    const std::string directory = debug_directory + "/devices";
    _GFX_DEVICE_PID_MAP map{};
    int32_t status = 0;
    const auto bad = session.call(kPidMaps, [&] {
        return with_numbers(kPidMaps, kContextNumber, [&] { status = read_map(session, map); });
    });
    const std::span entries{map.entries};
    for (const gfx_device_pid& entry : entries) {
        if (is_used(entry)) {
            reading.contexts.push_back(context_of(entry));
        }
    }
    if (bad) {
        reading.remarks.push_back(*bad);
    } else if (status < 0) {
        const int slot = session.adapters().chip_id_idx;
        const bool named_alike = session.adapters().header.IS_VA_driver[slot] == 0;
        reading.remarks.push_back(reading_failure(
            session, kPidMaps, directory, named_alike ? kLikeEntry : kInfoNode, "device contexts"));
    } else if (is_used(entries.back())) {
        if (auto more = beyond_the_map(session, directory)) {
            reading.remarks.push_back(*std::move(more));
        }
    }
}

}  // namespace nimba::smi
