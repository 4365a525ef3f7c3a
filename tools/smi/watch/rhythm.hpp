// SPDX-License-Identifier: MIT
// Rounds of questions, one after the other.
#pragma once

#include "tools/smi/process/stop_signals.hpp"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace nimba::smi {

struct Rhythm {
    std::chrono::milliseconds interval{};  // from the beginning of a round to that of the next
    std::optional<uint64_t> count;         // rounds; without it, until something ends them
};

// Calls `round` with the number of each round, from 1 on. A round that takes longer than the
// interval is followed at once. They end when they are as many as there should be, when `round`
// returns false, and when a stop signal comes between two of them.
void keep_rhythm(const Rhythm& rhythm, const StopSignals& stop,
                 const std::function<bool(uint64_t number)>& round);

}  // namespace nimba::smi
