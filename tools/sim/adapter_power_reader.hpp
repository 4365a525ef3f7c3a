// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"
#include "toml_table.hpp"

namespace nimba::sim {

// Reads the keys "clocks", "activity", "cooling", "board" and "segment" of an [[adapter]]. On a QV
// chip the segments are heaps.
AdapterPower read_adapter_power(const TableReader& adapter, bool is_qv);

}  // namespace nimba::sim
