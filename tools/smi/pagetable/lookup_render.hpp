// SPDX-License-Identifier: MIT
// The faces of "pagetable --va".
#pragma once

#include "tools/smi/pagetable/process_space.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace nimba::smi {

// For each process the way to the page that maps the address, or where it ends.
std::string lookup_text(std::span<const ProcessSpace> processes, uint64_t address);

// The document "nimba-smi.pagetable-va.1".
std::string lookup_json(const AddressSplit& split, std::span<const ProcessSpace> processes,
                        uint64_t address, std::span<const Problem> problems);

}  // namespace nimba::smi
