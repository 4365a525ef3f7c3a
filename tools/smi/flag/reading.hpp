// SPDX-License-Identifier: MIT
// What workers read of an adapter's control flag, and how it travels to the tool.
#pragma once

#include "tools/smi/dvfs/node_access.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

// Answer to "flag".
struct FlagReading {
    std::optional<std::string> bus_id;  // of the adapter; none when it is gone
    std::optional<uint32_t> flag;       // none when the driver does not give it
    NodeAccess access;                  // to its node

    bool operator==(const FlagReading&) const = default;
};

// Answer to "flag-write".
struct FlagWriting {
    std::optional<std::string> bus_id;  // of the adapter, as in both readings
    FlagReading before;
    FlagReading after;

    bool operator==(const FlagWriting&) const = default;
};

}  // namespace nimba::smi
