// SPDX-License-Identifier: MIT
#pragma once

#include "toml_table.hpp"
#include "video_memory.hpp"

#include <optional>

namespace nimba::sim {

// Reads the "page_tables" of an [[adapter.context]], if it has any.
std::optional<SyntheticTables> read_page_tables(const TableReader& context);

}  // namespace nimba::sim
