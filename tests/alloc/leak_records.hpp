// SPDX-License-Identifier: MIT
// Allocation records for the tests of the leak detector.
#pragma once

#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

inline bool operator==(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline void PrintTo(const _GFX_ALLOCATION_INFO& record, std::ostream* out)
{
    std::array<std::int32_t, sizeof record / sizeof(std::int32_t)> fields{};
    std::memcpy(fields.data(), &record, sizeof record);
    for (const std::int32_t field : fields) {
        *out << field << " ";
    }
}

namespace nimba::test {

using Record = _GFX_ALLOCATION_INFO;
using Records = std::vector<Record>;

struct RecordField {
    const char* name;
    std::int32_t Record::*member;
};

// What makes two allocations of one snapshot and the next the same.
inline constexpr std::array<RecordField, 6> kMatchKey{{
    {"handle", &Record::handle},
    {"width", &Record::width},
    {"height", &Record::height},
    {"size", &Record::size},
    {"hw_format", &Record::hw_format},
    {"at_type", &Record::at_type},
}};

// What makes two allocations of one report alike.
inline constexpr std::array<RecordField, 5> kGroupKey{{
    {"width", &Record::width},
    {"height", &Record::height},
    {"size", &Record::size},
    {"hw_format", &Record::hw_format},
    {"at_type", &Record::at_type},
}};

// Everything else that the driver tells.
inline constexpr std::array<RecordField, 15> kFreeFields{{
    {"device", &Record::device},
    {"pitch", &Record::pitch},
    {"bit_cnt", &Record::bit_cnt},
    {"secured", &Record::secured},
    {"tile", &Record::tile},
    {"cpu_visible", &Record::cpu_visible},
    {"cache_type", &Record::cache_type},
    {"pool_type", &Record::pool_type},
    {"segmentid", &Record::segmentid},
    {"compress_format", &Record::compress_format},
    {"bl_slot_index", &Record::bl_slot_index},
    {"gpu_virt_addr", &Record::gpu_virt_addr},
    {"imported", &Record::imported},
    {"fb_offset", &Record::fb_offset},
    {"share", &Record::share},
}};

// A record as the reader makes it, with 21 different values.
inline Record allocation(std::int32_t handle)
{
    return {handle, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 1, 1};
}

// What a node is read as that tells nothing of the allocation.
inline Record blank()
{
    Record record{};
    record.hit_count = 1;
    record.sum_count = 1;
    return record;
}

inline Record with(Record record, std::int32_t Record::*member, std::int32_t value)
{
    record.*member = value;
    return record;
}

inline Record with_hits(const Record& record, std::int32_t hit_count)
{
    return with(record, &Record::hit_count, hit_count);
}

}  // namespace nimba::test
