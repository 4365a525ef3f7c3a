// SPDX-License-Identifier: MIT
#pragma once

#include "toml_table.hpp"
#include "video_memory.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace nimba::sim {

inline constexpr std::string_view kContextExpected =
    "the handle of a device context of the adapter, [[adapter.context]]";

// What an adapter's tables of allocations refer to.
struct AllocationParts {
    const std::vector<AllocationShape>& shapes;
    std::vector<int64_t> devices;  // handles of the device contexts

    bool has_device(int64_t handle) const;
};

// Reads "seed", "shapes", "devices" and "segments".
AllocationSource read_allocation_source(const TableReader& table, const AllocationParts& parts);

// Reads "shape", "device" and "segment", for allocations that are all alike.
AllocationSource read_single_source(const TableReader& table, const AllocationParts& parts);

}  // namespace nimba::sim
