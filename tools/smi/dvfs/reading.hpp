// SPDX-License-Identifier: MIT
// What workers read of an adapter's settings, and how it travels to the tool.
#pragma once

#include "tools/smi/dvfs/field.hpp"
#include "tools/smi/dvfs/node_access.hpp"
#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// Answer to "dvfs".
struct DvfsReading {
    std::optional<std::string> bus_id;           // of the adapter; none when it is gone
    std::optional<uint32_t> chip;                // its PCI device identifier
    std::vector<std::optional<int64_t>> values;  // of dvfs_fields; none for those not given
    std::vector<NodeAccess> nodes;               // those of the fields

    bool operator==(const DvfsReading&) const = default;
};

// Answer to "dvfs-write".
struct DvfsWriting {
    std::optional<std::string> bus_id;  // of the adapter, as in both readings
    DvfsReading before;
    DvfsReading after;

    bool operator==(const DvfsWriting&) const = default;
};

// A field's value; none when the driver does not give it.
std::optional<int64_t> value_of(const DvfsReading& reading, const DvfsField& field);

}  // namespace nimba::smi
