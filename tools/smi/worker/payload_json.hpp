// SPDX-License-Identifier: MIT
// For the files that define the JSON forms of payloads.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <nlohmann/json.hpp>

#include <optional>

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

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Failure, status, call, message)

template <typename Payload>
nlohmann::json to_json_value(const Payload& payload)
{
    return payload;
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

}  // namespace nimba::smi

// What payload_value.hpp declares, for a type whose JSON form is defined in this file.
#define NIMBA_SMI_PAYLOAD(Type)                         \
    template nlohmann::json to_json_value(const Type&); \
    template std::optional<Type> payload_from(const nlohmann::json&);
