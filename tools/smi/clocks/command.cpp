// SPDX-License-Identifier: MIT
#include "tools/smi/clocks/command.hpp"

#include "tools/smi/clocks/figures.hpp"
#include "tools/smi/monitor/run.hpp"
#include "tools/smi/worker/requests.hpp"

namespace nimba::smi {

Report clocks_command(const Options& options)
{
    return run_monitor<ClockReading, Figures>(
        options,
        {kClocksRequest,
         [](const SlotIdentity&, const ClockReading& reading) { return clock_figures(reading); }},
        clocks_view());
}

}  // namespace nimba::smi
