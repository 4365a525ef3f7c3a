// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/reading.hpp"

#include "tools/smi/dvfs/node_access_json.hpp"
#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DvfsReading, bus_id, chip, values, nodes)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DvfsWriting, bus_id, before, after)

std::optional<int64_t> value_of(const DvfsReading& reading, const DvfsField& field)
{
    const std::size_t index = index_of(field);
    return index < reading.values.size() ? reading.values[index] : std::nullopt;
}

NIMBA_SMI_PAYLOAD(DvfsReading)
NIMBA_SMI_PAYLOAD(DvfsWriting)

}  // namespace nimba::smi
