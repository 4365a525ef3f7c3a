// SPDX-License-Identifier: MIT
// One video-memory allocation: the interface's record, and what every face needs of it.
#pragma once

#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace nimba::smi {

using Allocation = _GFX_ALLOCATION_INFO;

struct AllocationField {
    const char* name;
    int32_t Allocation::*member;
};

// What the driver tells, in the order of the record: all but the two counters at its end.
inline constexpr std::array kAllocationFields{
    AllocationField{"handle", &Allocation::handle},
    AllocationField{"device", &Allocation::device},
    AllocationField{"width", &Allocation::width},
    AllocationField{"height", &Allocation::height},
    AllocationField{"pitch", &Allocation::pitch},
    AllocationField{"bit_cnt", &Allocation::bit_cnt},
    AllocationField{"secured", &Allocation::secured},
    AllocationField{"size", &Allocation::size},
    AllocationField{"tile", &Allocation::tile},
    AllocationField{"cpu_visible", &Allocation::cpu_visible},
    AllocationField{"cache_type", &Allocation::cache_type},
    AllocationField{"pool_type", &Allocation::pool_type},
    AllocationField{"at_type", &Allocation::at_type},
    AllocationField{"segmentid", &Allocation::segmentid},
    AllocationField{"hw_format", &Allocation::hw_format},
    AllocationField{"compress_format", &Allocation::compress_format},
    AllocationField{"bl_slot_index", &Allocation::bl_slot_index},
    AllocationField{"gpu_virt_addr", &Allocation::gpu_virt_addr},
    AllocationField{"imported", &Allocation::imported},
    AllocationField{"fb_offset", &Allocation::fb_offset},
    AllocationField{"share", &Allocation::share},
};

// The 32 bits of a field that stand for an unsigned number: a size, a handle, an address.
inline uint32_t unsigned_bits(int32_t field)
{
    return static_cast<uint32_t>(field);
}

// The size in bytes, also from 2 GiB on, where the record's field is negative.
inline uint64_t bytes_of(const Allocation& allocation)
{
    return unsigned_bits(allocation.size);
}

// Drops every allocation that was already met with the same value in every field, the counters at
// its end apart. The interface can list one twice when it had to read the driver again.
void drop_repeated(std::vector<Allocation>& allocations);

}  // namespace nimba::smi
