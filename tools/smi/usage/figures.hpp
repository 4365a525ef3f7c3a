// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/figure.hpp"
#include "tools/smi/monitor/readings.hpp"

namespace nimba::smi {

// How frame rates, engine use and words look.
MonitorView<Figures> usage_view();

// What it shows of a reading. `counted`: the frame rates by the counts of the driver's nodes; where
// the nodes do not count flips, the library's are shown.
// The frame rates of a reading: those that were counted from the driver's nodes, or, when these do
// not count flips, the library's.
FrameRates frame_rates(const CounterReading& reading, const FrameRates& counted);

Figures usage_figures(const CounterReading& reading, const FrameRates& counted);

}  // namespace nimba::smi
