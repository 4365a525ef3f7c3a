// SPDX-License-Identifier: MIT
#include "tools/smi/flag/reading.hpp"

#include "tools/smi/dvfs/node_access_json.hpp"
#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FlagReading, bus_id, flag, access)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FlagWriting, bus_id, before, after)

nlohmann::json to_json_value(const FlagReading& reading)
{
    return reading;
}

nlohmann::json to_json_value(const FlagWriting& writing)
{
    return writing;
}

template std::optional<FlagReading> payload_from(const nlohmann::json&);
template std::optional<FlagWriting> payload_from(const nlohmann::json&);

}  // namespace nimba::smi
