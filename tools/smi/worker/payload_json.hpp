// SPDX-License-Identifier: MIT
// How payloads become values again: for the files that define their JSON forms.
#pragma once

#include "tools/smi/worker/message.hpp"

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
std::optional<Payload> payload_from(const nlohmann::json& value)
{
    try {
        return value.get<Payload>();
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

}  // namespace nimba::smi
