// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

enum class SortKey {
    kSlot,
    kHandle,
    kDevice,
    kPid,
    kProcess,
    kSize,
    kSegment,
    kWidth,
    kHeight,
    kFormat,
    kType,
};

struct SortOrder {
    SortKey key = SortKey::kSize;
    bool descending = true;

    bool operator==(const SortOrder&) const = default;
};

// What an allocation must be like to be listed.
struct AllocationFilter {
    std::optional<int> pid{};
    std::optional<std::string> process{};  // part of the name of one of its processes
    std::optional<uint32_t> device{};
    std::optional<int32_t> segment{};
    uint64_t min_size = 0;  // bytes

    bool operator==(const AllocationFilter&) const = default;
};

struct AllocOptions {
    SortOrder sort;
    AllocationFilter filter;
};

}  // namespace nimba::smi
