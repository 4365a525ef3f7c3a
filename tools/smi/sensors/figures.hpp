// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/figure.hpp"
#include "tools/smi/monitor/readings.hpp"

namespace nimba::smi {

// How the sensors look.
MonitorView<Figures> sensors_view();

// What it shows of a reading.
Figures sensor_figures(const SensorReading& reading);

}  // namespace nimba::smi
