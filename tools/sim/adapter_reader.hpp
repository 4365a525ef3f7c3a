// SPDX-License-Identifier: MIT
#pragma once

#include "claims.hpp"
#include "machine.hpp"
#include "toml_table.hpp"

#include <array>
#include <string_view>
#include <vector>

namespace nimba::sim {

inline constexpr std::array<std::string_view, 30> kAdapterKeys{
    "chip",    "vendor",     "device",     "bus_id",     "card",       "render",
    "nodes",   "unopenable", "version",    "driver",     "debug",      "info",
    "hwmon",   "proc",       "unreadable", "missing",    "context",    "allocation",
    "shape",   "generated",  "change",     "leak",       "clocks",     "activity",
    "cooling", "board",      "segment",    "link_width", "link_speed", "connectors"};

// Reads one [[adapter]] of a machine that has `processes`.
Adapter read_adapter(const TableReader& reader, Claims& claims,
                     const std::vector<Process>& processes);

}  // namespace nimba::sim
