// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>

namespace nimba::sim {

// What an adapter has to do, now, and what it has done since the machine began.
class Activity {
  public:
    explicit Activity(const AdapterActivity& description) : description_{description} {}

    void advance_to(std::chrono::nanoseconds time) { time_ = std::max(time, time_); }

    // Percent of full load: a triangle that goes up first, from 0 to 100.
    double load_at(std::chrono::nanoseconds time) const;
    double load() const { return load_at(time_); }

    int64_t flips() const;

    // When the last flip was, in nanoseconds since the machine began; 0 before the first.
    int64_t last_flip() const;

    // Until the last flip.
    int64_t blits() const;

    std::array<uint32_t, kBandwidthWords> bandwidth() const;
    std::array<uint32_t, kUsageWords> usage() const;

  private:
    double turn_at(std::chrono::nanoseconds time) const;  // the part of the period that is over
    int64_t flips_until(std::chrono::nanoseconds time) const;

    AdapterActivity description_;
    std::chrono::nanoseconds time_{0};
};

}  // namespace nimba::sim
