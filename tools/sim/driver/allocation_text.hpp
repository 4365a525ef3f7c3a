// SPDX-License-Identifier: MIT
// The texts of the nodes about video memory.
#pragma once

#include "video_memory.hpp"

#include <cstdint>
#include <string>

namespace nimba::sim {

// What an allocation has of its own, where its values leave that open.
struct OwnValues {
    int64_t handle = 0;
    int64_t device = 0;
    int64_t segment = 0;
    int64_t address = 0;
};

// The allocation's value, its own one where its values leave that open.
NodeValue value_of(const AllocationValues& values, AllocationKey key, const OwnValues& own);

// The info node of an allocation: lines such as "width=64". A VA driver shows devices in base 10,
// others in base 16; handles are in base 16 always.
std::string allocation_text(const AllocationValues& values, const OwnValues& own, bool va_driver);

// The node of a device context: lines such as "pid = 4100001".
std::string context_text(const DeviceContext& context);

// The VM node of an allocation of that device context, whose process has that name.
std::string vm_node_text(const AllocationValues& values, const OwnValues& own,
                         const DeviceContext& context, const std::string& process);

}  // namespace nimba::sim
