// SPDX-License-Identifier: MIT
// The faces of "leaks".
#pragma once

#include "tools/smi/leaks/result.hpp"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

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
