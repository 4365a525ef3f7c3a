// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/figure.hpp"
#include "tools/smi/monitor/readings.hpp"

#include <optional>
#include <string>

namespace nimba::smi {

// How the clocks look.
MonitorView<Figures> clocks_view();

// What it shows of a reading.
Figures clock_figures(const ClockReading& reading);

// The power level's name; nothing when there is none, or one that is not known.
std::optional<std::string> level_name(const ClockReading& reading);

}  // namespace nimba::smi
