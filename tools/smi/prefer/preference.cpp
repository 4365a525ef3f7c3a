// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/preference.hpp"

#include "tools/smi/worker/discovery.hpp"
#include "tools/smi/worker/payload_json.hpp"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace nimba::smi {
namespace {

// JSON texts would have to be UTF-8.
using Bytes = std::vector<uint8_t>;

Bytes bytes_of(const std::string& text)
{
    return {text.begin(), text.end()};
}

std::string text_in(const Json& object, const char* key)
{
    const auto bytes = object.at(key).get<Bytes>();
    return {bytes.begin(), bytes.end()};
}

}  // namespace

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PciLocation, domain, bus, device, function)

static void to_json(Json& value, const Preference& preference)
{
    value = {{"application", bytes_of(preference.application)},
             {"path", bytes_of(preference.path)},
             {"value", preference.value},
             {"gpu_name", bytes_of(preference.gpu_name)},
             {"gpu", preference.gpu}};
}

static void from_json(const Json& value, Preference& preference)
{
    preference = {text_in(value, "application"), text_in(value, "path"),
                  value.at("value").get<int32_t>(), text_in(value, "gpu_name"),
                  value.at("gpu").get<PciLocation>()};
}

static void to_json(Json& value, const PreferenceRequest& request)
{
    value = {{"home", bytes_of(request.home)}, {"preference", request.preference}};
}

static void from_json(const Json& value, PreferenceRequest& request)
{
    request = {text_in(value, "home"), value.at("preference").get<Preference>()};
}

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PreferenceList, preferences)

std::optional<PciLocation> location_in(const std::string& bus_id)
{
    const auto [domain, rest] = luid_of(bus_id);
    if (domain > std::numeric_limits<uint16_t>::max()) {
        return std::nullopt;
    }
    return PciLocation{static_cast<uint16_t>(domain), static_cast<uint8_t>(rest >> 16U),
                       static_cast<uint8_t>(rest >> 8U), static_cast<uint8_t>(rest)};
}

std::string bus_id_text(const PciLocation& location)
{
    return fmt::format("{:04x}:{:02x}:{:02x}.{}", location.domain, location.bus, location.device,
                       location.function);
}

std::string request_text(std::string_view name, const PreferenceRequest& request)
{
    return fmt::format("{} {}", name, Json(request).dump());
}

std::optional<PreferenceRequest> preference_request_in(std::string_view arguments)
{
    return payload_from<PreferenceRequest>(Json::parse(arguments, nullptr, false));
}

NIMBA_SMI_PAYLOAD(PreferenceList)

}  // namespace nimba::smi
