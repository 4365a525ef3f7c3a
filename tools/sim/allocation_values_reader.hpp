// SPDX-License-Identifier: MIT
#pragma once

#include "toml_table.hpp"
#include "video_memory.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace nimba::sim {

// The keys of an allocation's table.
inline constexpr auto kAllocationKeys = [] {
    std::array<std::string_view, kAllocationKeyCount + 2> keys{"entry"};
    std::copy(kAllocationKeyNames.begin(), kAllocationKeyNames.end(), keys.begin() + 1);
    keys.back() = "vm_info";
    return keys;
}();

// The keys of a shape's table. Each allocation of a shape has a handle, a device and an address of
// its own.
inline constexpr auto kShapeKeys = [] {
    std::array<std::string_view, kAllocationKeyCount - 1> keys{"name", "weight"};
    std::copy_if(kAllocationKeyNames.begin(), kAllocationKeyNames.end(), keys.begin() + 2,
                 [](std::string_view key) {
                     return key != "handle" && key != "device" && key != "gpu_virt_addr";
                 });
    return keys;
}();

inline constexpr int64_t kGreatestHandle = 0x7FFFFFFF;

// A node's value: a number in that range, or a text of one line.
NodeValue read_node_value(const TableReader& reader, std::string_view key, int64_t least,
                          int64_t greatest);

// Reads the values of an allocation or of a shape. Those that are not mentioned have the defaults
// that make a picture of them; "handle", "device", "segmentid" and "gpu_virt_addr" then have no
// value.
AllocationValues read_allocation_values(const TableReader& reader);

}  // namespace nimba::sim
