// SPDX-License-Identifier: MIT
// The faces of "leaks".
#pragma once

#include "tools/smi/leaks/result.hpp"
#include "tools/smi/worker/payload.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// What the snapshots so far have shown, for the user to see that it goes on: "snapshot 3 of 10: 12
// allocations, 384 KiB, +5 of 128x64, 32 KiB, format 28, type 1", of the group that grew most.
// `count`: the snapshots that will be taken, when it is known.
std::string leaks_progress(uint64_t snapshots, const std::optional<uint64_t>& count,
                           std::span<const AdapterHistory> adapters);

// A group and its adapter, which lives in the result.
struct LeakRow {
    const SlotIdentity* adapter = nullptr;
    GroupGrowth group;
};

// The groups of all adapters, those that grew most first; at most `top`.
std::vector<LeakRow> leak_rows(const LeaksResult& result, const std::optional<std::size_t>& top);

// A table and a line with the number of snapshots; empty when no snapshot could be taken.
std::string leaks_text(const LeaksResult& result, const std::vector<LeakRow>& rows);

// A header line and one line for each group.
std::string leaks_csv(const std::vector<LeakRow>& rows);

// The document "nimba-smi.leaks.1".
std::string leaks_json(const LeaksResult& result, const std::vector<LeakRow>& rows,
                       std::chrono::milliseconds interval);

}  // namespace nimba::smi
