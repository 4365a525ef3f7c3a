// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"

#include <chrono>
#include <cstdint>

namespace nimba::sim {

class Activity;

// An adapter's temperature, which follows its load, and its fans, which follow the temperature.
class Cooling {
  public:
    explicit Cooling(const AdapterPower& description);

    void advance_to(std::chrono::nanoseconds time, const Activity& activity);

    int64_t temperature() const;  // degrees Celsius
    int64_t fan_speed() const;    // turns per minute

  private:
    double target(double load) const;

    AdapterCooling description_;
    double temperature_;
    double approach_;  // the part of the way to its target that the temperature goes in a step
    int64_t steps_ = 0;
};

}  // namespace nimba::sim
