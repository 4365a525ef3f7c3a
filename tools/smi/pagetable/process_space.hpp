// SPDX-License-Identifier: MIT
// The address space of one process, with all that is shown of it.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/pagetable/address_space.hpp"
#include "tools/smi/pagetable/record.hpp"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

struct ProcessSpace {
    VmDevice device;
    std::string title;
    AddressSpace space;
    std::vector<VmAllocation> allocations;
};

// "process 4100001 (viewer)", and ", address space 1 of 2" for a process that has several among
// `all`.
std::string process_title(const VmDevice& device, std::span<const VmDevice> all);

// A remark for each kind of entry that is left out.
std::vector<Problem> oddity_problems(const std::string& title, const Oddities& odd);

}  // namespace nimba::smi
