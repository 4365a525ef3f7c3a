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

NIMBA_SMI_PAYLOAD(Discovery)
NIMBA_SMI_PAYLOAD(Description)
NIMBA_SMI_PAYLOAD(LibraryVersion)

}  // namespace nimba::smi
