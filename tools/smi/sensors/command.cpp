// SPDX-License-Identifier: MIT
#include "tools/smi/sensors/command.hpp"

#include "tools/smi/monitor/run.hpp"
#include "tools/smi/sensors/figures.hpp"
#include "tools/smi/worker/requests.hpp"

namespace nimba::smi {

Report sensors_command(const Options& options)
{
    return run_monitor<SensorReading, Figures>(
        options,
        {kSensorsRequest,
         [](const SlotIdentity&, const SensorReading& reading) { return sensor_figures(reading); }},
        sensors_view());
}

}  // namespace nimba::smi
