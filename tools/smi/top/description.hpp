// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"

#include <string>

namespace nimba::smi::top {

// What an adapter is and what it does besides what gauges show, as far as it is known and there is
// room for: "0000:01:00.0 · card 1 · PCIe 4 x16 · level balance · ...".
std::string description(const AdapterState& adapter, int width);

}  // namespace nimba::smi::top
