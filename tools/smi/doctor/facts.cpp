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

nlohmann::json to_json_value(const LibdrmFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const DeviceFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const DebugfsFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const CommandFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const PreferenceFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const UserFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const KernelInterfaceFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const DebugFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const InfoFacts& facts)
{
    return facts;
}

nlohmann::json to_json_value(const NodeFact& fact)
{
    return fact;
}

template std::optional<LibdrmFacts> payload_from(const nlohmann::json&);
template std::optional<DeviceFacts> payload_from(const nlohmann::json&);
template std::optional<DebugfsFacts> payload_from(const nlohmann::json&);
template std::optional<CommandFacts> payload_from(const nlohmann::json&);
template std::optional<PreferenceFacts> payload_from(const nlohmann::json&);
template std::optional<UserFacts> payload_from(const nlohmann::json&);
template std::optional<KernelInterfaceFacts> payload_from(const nlohmann::json&);
template std::optional<DebugFacts> payload_from(const nlohmann::json&);
template std::optional<InfoFacts> payload_from(const nlohmann::json&);
template std::optional<NodeFact> payload_from(const nlohmann::json&);

}  // namespace nimba::smi
