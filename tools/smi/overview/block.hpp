// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/overview/style.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"

#include <string>

namespace nimba::smi {

// The lines of an adapter: facts at the left, bars at the right, or below each other on a narrow
// terminal. Of one that did not answer there are no figures.
std::string adapter_block(const AdapterState& adapter, const OverviewStyle& style);

}  // namespace nimba::smi
