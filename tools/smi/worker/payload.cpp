// SPDX-License-Identifier: MIT
#include "tools/smi/worker/payload.hpp"

#include "tools/smi/worker/adapter_json.hpp"
#include "tools/smi/worker/denied_file_json.hpp"
#include "tools/smi/worker/payload_json.hpp"

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ForeignGpu, name, bus_id, card, vendor_id, device_id, luid)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SlotIdentity, slot, bus_id, name)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Discovery, libdrm_usable, slots, foreign_gpu, denied_directory,
                                   denied_nodes, drm_devices, unlisted)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Description, adapter, denied_info)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(LibraryVersion, path, package_version, interface_version,
                                   client_version, match_code)

nlohmann::json to_json_value(const Discovery& discovery)
{
    return discovery;
}

nlohmann::json to_json_value(const Description& description)
{
    return description;
}

nlohmann::json to_json_value(const LibraryVersion& version)
{
    return version;
}

template std::optional<Discovery> payload_from(const nlohmann::json&);
template std::optional<Description> payload_from(const nlohmann::json&);
template std::optional<LibraryVersion> payload_from(const nlohmann::json&);

}  // namespace nimba::smi
