// SPDX-License-Identifier: MIT
// Figures that follow from what was read of an adapter.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"

#include <cstdint>
#include <optional>

namespace nimba::smi {

// In bytes; a part that is not known has no value.
struct MemoryUse {
    std::optional<uint64_t> used;
    std::optional<uint64_t> total;

    bool operator==(const MemoryUse&) const = default;
};

// Of all segments together.
MemoryUse memory_use(const AdapterState& adapter);

// Degrees Celsius: of the sensors, or else of the summary.
std::optional<int64_t> temperature(const AdapterState& adapter);

// Whether no figure came from the driver: it is gone or does not answer.
bool is_silent(const AdapterState& adapter);

}  // namespace nimba::smi
