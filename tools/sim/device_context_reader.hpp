// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"
#include "toml_table.hpp"
#include "video_memory.hpp"

#include <optional>
#include <vector>

namespace nimba::sim {

// Reads the [[adapter.context]] tables of an adapter, and "contexts" and "pids" of its
// [adapter.generated]. Generated device contexts belong to `processes` in turn where there are no
// "pids".
std::vector<DeviceContext> read_device_contexts(const TableReader& adapter,
                                                const std::optional<TableReader>& generated,
                                                const std::vector<Process>& processes);

}  // namespace nimba::sim
