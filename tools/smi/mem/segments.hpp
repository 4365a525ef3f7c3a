// SPDX-License-Identifier: MIT
// The memory segments of an adapter: the model of "mem".
#pragma once

#include "tools/smi/monitor/readings.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// Sizes are in the unit of the source, SegmentTable::unit.
struct Segment {
    std::string label;                // "0", "4+"
    std::optional<std::string> name;  // the heap's
    SegmentUse use;

    bool operator==(const Segment&) const = default;
};

struct SegmentTable {
    SegmentSource source = SegmentSource::kAllocations;
    std::vector<Segment> segments;
    SegmentUse sum;  // of all; a part that is not known makes the sum so

    bool operator==(const SegmentTable&) const = default;
};

// A unit of a source's sizes.
struct SegmentUnit {
    const char* name;  // "MB"
    uint64_t bytes;
};
SegmentUnit unit_of(SegmentSource source);

// A size that is in the unit of the source, in bytes.
std::optional<uint64_t> in_bytes(const std::optional<uint64_t>& size, SegmentSource source);

// The segments of a reading. Without the driver's node, "4+" is there only if something is in it:
// there may be no such segment.
SegmentTable segment_table(const SegmentReading& reading);

// The share that is used, in whole per cent, rounded toward zero; nothing when it cannot be told.
std::optional<uint64_t> used_percent(const SegmentUse& use);

}  // namespace nimba::smi
