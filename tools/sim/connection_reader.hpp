// SPDX-License-Identifier: MIT
// How a machine file says what an adapter is connected to: the bus and displays.
#pragma once

#include "machine.hpp"
#include "toml_table.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::sim {

// Reads "link_width" and "link_speed".
PcieLink read_link(const TableReader& adapter);

// Reads "connectors" of the adapter whose other graphics keys have given `drm`. What it returns is
// as in DrmDevice.
std::optional<std::vector<std::string>> read_connectors(const TableReader& adapter,
                                                        const DrmDevice& drm);

}  // namespace nimba::sim
