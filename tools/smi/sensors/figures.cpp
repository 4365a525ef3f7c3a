// SPDX-License-Identifier: MIT
#include "tools/smi/sensors/figures.hpp"

#include <array>

namespace nimba::smi {
namespace {

constexpr std::array kColumns{
    FigureColumn{"temperature_celsius", "TEMPERATURE", " C"},
    FigureColumn{"fan0", "FAN 0"},
    FigureColumn{"fan1", "FAN 1"},
    FigureColumn{"fan_speed", "FAN SPEED"},
};

}  // namespace

MonitorView<Figures> sensors_view()
{
    return figure_view("nimba-smi.sensors.1", kColumns);
}

Figures sensor_figures(const SensorReading& reading)
{
    return {figure(reading.temperature), figure(reading.fan0), figure(reading.fan1),
            figure(reading.fan_speed)};
}

}  // namespace nimba::smi
