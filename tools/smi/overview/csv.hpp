// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/text/table.hpp"

namespace nimba::smi {

// The columns of the overview as comma-separated values, and the row of an adapter: who it is,
// versions and link, sizes in bytes, and the figures of "clocks", "sensors" and "usage".
Row overview_csv_header();
Row overview_csv_row(const AdapterState& adapter);

}  // namespace nimba::smi
