// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/readings.hpp"

#include <cstdint>
#include <optional>

namespace nimba::smi {

// Computes an adapter's frame rates from the counts of its driver. The time is that of the driver's
// time stamps, which stand still as long as there is no new frame.
class FrameMeter final {
  public:
    // The rates since the counts before that had another time stamp, and the average since the
    // first. A rate that cannot be told has no value, as when the counts or the time went back.
    FrameRates add(const FrameCounts& counts);

  private:
    struct Sample {
        uint32_t flips;
        int64_t time;
        std::optional<int64_t> blits;
    };

    FrameRates rates_since(const Sample& before, const Sample& now);

    std::optional<Sample> last_;
    // Over all times for which both flips and blits are known.
    uint64_t frames_ = 0;
    uint64_t nanoseconds_ = 0;
};

}  // namespace nimba::smi
