// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace nimba::smi {

// What the commands take that show samples.
struct MonitorOptions {
    std::optional<std::chrono::milliseconds> watch{};     // from one sample to the next
    std::optional<uint64_t> count{};                      // samples; without it, until interrupted
    std::optional<std::chrono::milliseconds> interval{};  // that a single sample covers
};

}  // namespace nimba::smi
