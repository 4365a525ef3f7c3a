// SPDX-License-Identifier: MIT
// The faces of "flag".
#pragma once

#include "tools/smi/dvfs/outcome.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/flag/reading.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

// The flags of the adapters that could be read, in slot order.
struct FlagSnapshot {
    std::vector<std::pair<SlotIdentity, FlagReading>> adapters;
    std::vector<Problem> problems;
};

std::string flag_text(const FlagSnapshot& snapshot);
std::string flag_json(const FlagSnapshot& snapshot);

struct FlagOutcome {
    uint32_t before = 0;
    uint32_t asked = 0;
    std::optional<uint32_t> after;
    Verdict verdict = Verdict::kUnknown;
};

// What became of the bits; no outcome when nothing was written.
struct FlagChange {
    std::optional<SlotIdentity> adapter;
    std::optional<FlagOutcome> outcome;
    std::vector<Problem> problems;
};

std::string flag_change_text(const FlagChange& change);
std::string flag_change_json(const FlagChange& change);

// "0x10", or "not available".
std::string bits_text(const std::optional<uint32_t>& bits);

}  // namespace nimba::smi
