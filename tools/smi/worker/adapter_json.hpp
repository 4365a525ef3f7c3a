// SPDX-License-Identifier: MIT
// The JSON form of an adapter: for the files that define those of payloads.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Luid, low, high)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Adapter, slot, name, bus_id, card, vendor_id, device_id, driver,
                                   luid)

}  // namespace nimba::smi
