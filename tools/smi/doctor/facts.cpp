// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/facts.hpp"

#include "tools/smi/worker/denied_file_json.hpp"
#include "tools/smi/worker/payload_json.hpp"

#include <nlohmann/json.hpp>

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(LibdrmFacts, name, path, missing, error)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PciAdapter, bus_id, device_id, driver, drm)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DeviceFacts, pci_error, adapters, denied_directory, denied_nodes,
                                   drm_devices)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DebugfsFacts, error, empty)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(CommandFacts, ps, ps_names, dmidecode, dmi_tells, dmi_said, root)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PreferenceFacts, home, path, directory_error, exists, regular,
                                   read_error, write_error, applications, bad_lines, first_bad_line)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(UserFacts, id, name, groups)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(KernelInterfaceFacts, names, errors, loaded, path, size_function,
                                   block_size, functions)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(NodeFact, path, error)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DebugFacts, directory, allocations)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(InfoFacts, directory, usage_switch, switch_write_error)

NIMBA_SMI_PAYLOAD(LibdrmFacts)
NIMBA_SMI_PAYLOAD(DeviceFacts)
NIMBA_SMI_PAYLOAD(DebugfsFacts)
NIMBA_SMI_PAYLOAD(CommandFacts)
NIMBA_SMI_PAYLOAD(PreferenceFacts)
NIMBA_SMI_PAYLOAD(UserFacts)
NIMBA_SMI_PAYLOAD(KernelInterfaceFacts)
NIMBA_SMI_PAYLOAD(DebugFacts)
NIMBA_SMI_PAYLOAD(InfoFacts)
NIMBA_SMI_PAYLOAD(NodeFact)

}  // namespace nimba::smi
