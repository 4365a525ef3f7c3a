// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/worker/message.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// What everything that a worker reads of its adapter has.
struct AdapterReading {
    std::optional<std::string> bus_id;  // of the adapter; none when it is gone
    std::vector<Failure> remarks;       // what the reading lacks
    bool stale = false;  // the driver went and came again: only a new worker can read it

    bool operator==(const AdapterReading&) const = default;
};

}  // namespace nimba::smi
