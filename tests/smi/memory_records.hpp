// SPDX-License-Identifier: MIT
// Allocations and snapshots for the tests of the commands about memory.
#pragma once

#include "tools/smi/memory/snapshot.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <utility>
#include <vector>

namespace nimba::smi {

inline Allocation allocation(uint32_t handle, uint32_t device, uint32_t size, int32_t segment = 0)
{
    Allocation record{};
    record.handle = static_cast<int32_t>(handle);
    record.device = static_cast<int32_t>(device);
    record.size = static_cast<int32_t>(size);
    record.segmentid = segment;
    record.hit_count = 1;
    record.sum_count = 1;
    return record;
}

inline const SlotIdentity kFirstSlot{0, "0000:01:00.0", "Gpu0:Nimba-K1"};
inline const SlotIdentity kSecondSlot{1, "0000:02:00.0", std::nullopt};

inline AdapterMemory memory_of(const SlotIdentity& slot, std::vector<Allocation> allocations,
                               const std::vector<DeviceContext>& contexts)
{
    return {slot, std::move(allocations), Owners{contexts}};
}

}  // namespace nimba::smi
