// SPDX-License-Identifier: MIT
// What became of an adapter's allocations over successive snapshots.
#pragma once

#include "tools/smi/memory/owners.hpp"
#include "tools/smi/memory/reading.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace nimba::smi {

// One device's part in a group.
struct GroupOwner {
    uint32_t device = 0;
    uint64_t count = 0;              // allocations in the last snapshot
    int64_t change = 0;              // since the first snapshot
    std::vector<Process> processes;  // that hold the device; none when they are not known

    bool operator==(const GroupOwner&) const = default;
};

// The allocations of one shape.
struct GroupGrowth {
    Shape shape;
    uint64_t count = 0;
    int64_t change = 0;
    int32_t oldest_hits = 0;
    std::vector<GroupOwner> owners;  // those that grew most first

    // Of all its allocations.
    [[nodiscard]] uint64_t bytes() const { return count * shape.size; }

    bool operator==(const GroupGrowth&) const = default;
};

// The groups of one adapter, from its first snapshot on.
class AdapterHistory final {
  public:
    explicit AdapterHistory(SlotIdentity adapter) : adapter_{std::move(adapter)} {}

    [[nodiscard]] const SlotIdentity& adapter() const { return adapter_; }

    // The snapshots that were taken.
    [[nodiscard]] uint64_t snapshots() const { return snapshots_; }

    void add(const LeakReading& reading);

    // The groups of the last snapshot, those that grew most first, and of equal growth the largest.
    [[nodiscard]] std::vector<GroupGrowth> groups() const;

  private:
    using Counts = std::map<uint32_t, uint64_t>;  // by device

    [[nodiscard]] GroupGrowth growth_of(const LeakGroup& group) const;

    SlotIdentity adapter_;
    uint64_t snapshots_ = 0;
    std::map<Shape, Counts> first_;
    std::vector<LeakGroup> last_;
    Owners owners_;
};

}  // namespace nimba::smi
