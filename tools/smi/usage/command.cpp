// SPDX-License-Identifier: MIT
#include "tools/smi/usage/command.hpp"

#include "tools/smi/monitor/run.hpp"
#include "tools/smi/usage/figures.hpp"
#include "tools/smi/usage/frame_meter.hpp"
#include "tools/smi/worker/requests.hpp"

#include <map>

namespace nimba::smi {

Report usage_command(const Options& options)
{
    std::map<int, FrameMeter> meters;  // by slot
    const auto content = [&meters](const SlotIdentity& adapter, const CounterReading& reading) {
        return usage_figures(reading, meters[adapter.slot].add(reading.frames));
    };
    return run_monitor<CounterReading, Figures>(options, {kCountersRequest, content, true},
                                                usage_view());
}

}  // namespace nimba::smi
