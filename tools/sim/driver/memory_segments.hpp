// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

// The segments that have a heap node, by their ids.
inline constexpr std::array<std::string_view, 4> kHeapNames{"heap_invalid", "heap_local",
                                                            "heap_pcie_unsnoop", "heap_pcie_snoop"};

// The text of the node segment_info: a line for each of `segments`, in units of 1000 bytes.
std::string segment_info_text(const std::vector<MemorySegment>& segments);

// How full an adapter's segments of memory are.
class MemorySegments {
  public:
    explicit MemorySegments(const std::vector<MemorySegment>& description)
        : description_{description}
    {
    }

    // Says how much allocations take.
    void set_allocated(std::size_t segment, uint64_t bytes);

    // What is used includes the allocations, and is never more than there is.
    std::vector<MemorySegment> all() const;
    std::optional<MemorySegment> find(std::size_t id) const;

    // What is used is that of others than the allocations.
    std::optional<MemorySegment> find_without_allocations(std::size_t id) const;

  private:
    MemorySegment now(const MemorySegment& segment) const;

    std::vector<MemorySegment> description_;
    std::array<uint64_t, kMostSegments> allocated_{};
};

}  // namespace nimba::sim
