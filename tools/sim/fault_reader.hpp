// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fault.hpp"
#include "machine.hpp"
#include "toml_table.hpp"

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace nimba::sim {

inline constexpr std::array<std::string_view, 13> kFaultKeys{
    "kind", "adapter", "directory", "path",  "error",    "bytes", "entries",
    "ms",   "seed",    "first",     "every", "after_ms", "for_ms"};

// Reads a [[fault]]. Throws MachineFileError.
Fault read_fault(const TableReader& reader);

// Reads the list of them in a machine file with these adapters. Throws MachineFileError.
std::vector<Fault> read_faults(const TableReader& machine, std::span<const Adapter> adapters);

// Reads what to_text(const Fault&) writes. Throws MachineFileError.
Fault parse_fault(std::string_view text);

}  // namespace nimba::sim
