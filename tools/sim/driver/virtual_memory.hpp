// SPDX-License-Identifier: MIT
#pragma once

#include "driver/address_space.hpp"
#include "driver/allocations.hpp"
#include "machine.hpp"
#include "video_memory.hpp"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace nimba::sim {

// The address spaces of one adapter's device contexts, and what its driver shows of them.
class VirtualMemory {
  public:
    // What is given outlives this object.
    VirtualMemory(const VideoMemory& description, const std::vector<Process>& processes);

    // The text of an allocation's VM node: empty if no context has the allocation.
    std::string node(const AllocationValues& values, const OwnValues& own) const;

    // What the context sees while the simulation has made `allocations`.
    AddressSpace address_space(const DeviceContext& context, const Allocations& allocations) const;

    // The dump of the page tables of a context that sees that.
    static std::string dump(const DeviceContext& context, const AddressSpace& space);

  private:
    const VideoMemory& description_;
    std::unordered_map<int64_t, const DeviceContext*> contexts_;  // by handle
    std::unordered_map<int64_t, std::string> names_;              // of processes, by id
};

}  // namespace nimba::sim
