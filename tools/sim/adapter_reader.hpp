// SPDX-License-Identifier: MIT
#pragma once

#include "claims.hpp"
#include "machine.hpp"
#include "toml_table.hpp"

#include <array>
#include <string_view>

namespace nimba::sim {

inline constexpr std::array<std::string_view, 14> kAdapterKeys{
    "chip",       "vendor",  "device", "bus_id", "card", "render", "nodes",
    "unopenable", "version", "driver", "debug",  "info", "hwmon",  "unreadable"};

// Reads one [[adapter]].
Adapter read_adapter(const TableReader& reader, Claims& claims);

}  // namespace nimba::sim
