// SPDX-License-Identifier: MIT
#pragma once

#include "leak_records.hpp"

#include <array>

namespace nimba::test {

// Every key of an allocation's node and the field that it fills, in the usual order.
inline constexpr std::array<RecordField, 21> kAllocationKeys{{
    {"handle", &Record::handle},
    {"device", &Record::device},
    {"width", &Record::width},
    {"height", &Record::height},
    {"pitch", &Record::pitch},
    {"bit_cnt", &Record::bit_cnt},
    {"secured", &Record::secured},
    {"size", &Record::size},
    {"tile", &Record::tile},
    {"cpu_visible", &Record::cpu_visible},
    {"cache_type", &Record::cache_type},
    {"pool_type", &Record::pool_type},
    {"at_type", &Record::at_type},
    {"segmentid", &Record::segmentid},
    {"hw_format", &Record::hw_format},
    {"compress_format", &Record::compress_format},
    {"bl_slot_index", &Record::bl_slot_index},
    {"gpu_virt_addr", &Record::gpu_virt_addr},
    {"imported", &Record::imported},
    {"fb_offset", &Record::fb_offset},
    {"share", &Record::share},
}};

}  // namespace nimba::test
