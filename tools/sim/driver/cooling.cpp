// SPDX-License-Identifier: MIT
#include "driver/cooling.hpp"

#include "driver/activity.hpp"

#include <algorithm>
#include <cmath>

namespace nimba::sim {
namespace {

constexpr std::chrono::milliseconds kStep{100};
constexpr double kCool = 30;  // degrees at which the fans are slowest
constexpr double kHot = 90;   // and fastest

}  // namespace

Cooling::Cooling(const AdapterPower& description)
    : description_{description.cooling},
      temperature_{description_.start ? static_cast<double>(*description_.start)
                                      : target(static_cast<double>(description.activity.load))},
      approach_{1 - std::exp(-static_cast<double>(kStep.count()) /
                             static_cast<double>(description_.time_constant.count()))}
{
}

double Cooling::target(double load) const
{
    return static_cast<double>(description_.ambient) +
           static_cast<double>(description_.rise) * load / 100;
}

// In steps of the same length, so that it does not matter when anybody looks.
void Cooling::advance_to(std::chrono::nanoseconds time, const Activity& activity)
{
    const int64_t due = time / std::chrono::nanoseconds{kStep};
    for (; steps_ < due; ++steps_) {
        temperature_ +=
            (target(activity.load_at(steps_ * std::chrono::nanoseconds{kStep})) - temperature_) *
            approach_;
    }
}

int64_t Cooling::temperature() const
{
    return std::lround(temperature_);
}

int64_t Cooling::fan_speed() const
{
    const double heat = std::clamp((temperature_ - kCool) / (kHot - kCool), 0.0, 1.0);
    return description_.least_fan +
           std::lround(static_cast<double>(description_.greatest_fan - description_.least_fan) *
                       heat);
}

}  // namespace nimba::sim
