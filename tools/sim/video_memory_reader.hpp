// SPDX-License-Identifier: MIT
#pragma once

#include "machine.hpp"
#include "toml_table.hpp"
#include "video_memory.hpp"

#include <array>
#include <string_view>
#include <vector>

namespace nimba::sim {

// The keys of an [[adapter]] that describe its video memory.
inline constexpr std::array<std::string_view, 6> kVideoMemoryKeys{
    "context", "allocation", "shape", "generated", "change", "leak"};

// Reads them. Generated device contexts belong to `processes` where the file does not say
// otherwise. Without any of these keys there is a kernel driver's empty memory, or none without a
// driver. `names` says what the driver calls the directories of allocations by.
VideoMemory read_video_memory(const TableReader& adapter, const std::vector<Process>& processes,
                              bool has_driver, AllocationNames names);

}  // namespace nimba::sim
