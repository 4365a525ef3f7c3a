// SPDX-License-Identifier: MIT
#include "tools/smi/flag/reading.hpp"

#include "tools/smi/dvfs/node_access_json.hpp"
#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FlagReading, bus_id, flag, access)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FlagWriting, bus_id, before, after)

NIMBA_SMI_PAYLOAD(FlagReading)
NIMBA_SMI_PAYLOAD(FlagWriting)

}  // namespace nimba::smi
