// SPDX-License-Identifier: MIT
#include "tools/smi/worker/payload.hpp"

// An absent value is null.
template <typename T>
struct nlohmann::adl_serializer<std::optional<T>> {
    static void to_json(json& value, const std::optional<T>& optional)
    {
        value = optional ? json(*optional) : json(nullptr);
    }
    static void from_json(const json& value, std::optional<T>& optional)
    {
        optional = value.is_null() ? std::nullopt : std::optional<T>(value.get<T>());
    }
};

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Luid, low, high)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Adapter, slot, name, bus_id, card, vendor_id, device_id, driver,
                                   luid)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ForeignGpu, name, bus_id, card, vendor_id, device_id, luid)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SlotIdentity, slot, bus_id, name)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(DeniedFile, path, group)
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

template <typename Payload>
std::optional<Payload> payload_from(const nlohmann::json& value)
{
    try {
        return value.get<Payload>();
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

template std::optional<Discovery> payload_from(const nlohmann::json&);
template std::optional<Description> payload_from(const nlohmann::json&);
template std::optional<LibraryVersion> payload_from(const nlohmann::json&);

}  // namespace nimba::smi
