// SPDX-License-Identifier: MIT
// What workers read of an adapter's video memory, and how it travels to the tool.
#pragma once

#include "tools/smi/memory/allocation.hpp"
#include "tools/smi/worker/adapter_reading.hpp"
#include "tools/smi/worker/payload_value.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// An open device context.
struct DeviceContext {
    uint32_t device = 0;  // the handle that its allocations tell
    int pid = 0;
    std::string name;  // of the process; empty when it has gone or has none

    bool operator==(const DeviceContext&) const = default;
};

// What every reading of allocations has.
struct ReadingBase : AdapterReading {
    std::vector<DeviceContext> contexts;

    bool operator==(const ReadingBase&) const = default;
};

// Answer to "memory".
struct MemoryReading : ReadingBase {
    std::vector<Allocation> allocations;
};

struct DeviceCount {
    uint32_t device = 0;
    uint64_t count = 0;  // allocations

    bool operator==(const DeviceCount&) const = default;
};

// What makes allocations alike.
struct Shape {
    int32_t width = 0;
    int32_t height = 0;
    uint32_t size = 0;  // bytes of one allocation
    int32_t hw_format = 0;
    int32_t at_type = 0;

    auto operator<=>(const Shape&) const = default;
};

// The allocations of one shape.
struct LeakGroup {
    Shape shape;
    int32_t oldest_hits = 0;  // snapshots in a row that held the one that is there longest
    std::vector<DeviceCount> owners;

    bool operator==(const LeakGroup&) const = default;
};

// Answer to "leaks": one snapshot.
struct LeakReading : ReadingBase {
    std::vector<LeakGroup> groups;

    bool operator==(const LeakReading&) const = default;
};

}  // namespace nimba::smi
