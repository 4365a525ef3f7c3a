// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/figure.hpp"
#include "tools/smi/monitor/readings.hpp"

namespace nimba::smi {

// How the clocks look.
MonitorView<Figures> clocks_view();

// What it shows of a reading.
Figures clock_figures(const ClockReading& reading);

}  // namespace nimba::smi
