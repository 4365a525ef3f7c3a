// SPDX-License-Identifier: MIT
// What a worker answers is a payload, a value that has a JSON form. The file that defines the form
// makes these two for its type; see payload_json.hpp.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <optional>

namespace nimba::smi {

template <typename Payload>
nlohmann::json to_json_value(const Payload& payload);

// Nothing when the value has another shape.
template <typename Payload>
std::optional<Payload> payload_from(const nlohmann::json& value);

}  // namespace nimba::smi
