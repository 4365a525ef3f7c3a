// SPDX-License-Identifier: MIT
#include "tools/smi/info/command.hpp"

#include "tools/smi/info/render.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/snapshot/collector.hpp"

#include <string>
#include <utility>

namespace nimba::smi {

Report info_command(const Options& options)
{
    const StopSignals stop{SignalEffect::kEndOfProcess};
    Collector collector{options, LostWorkers::kLeftOut, SnapshotScope::kSummaries};
    auto snapshot = collector.take(stop.descriptor());
    if (!snapshot) {
        return {};
    }
    std::string output = options.json  ? info_json(*snapshot)
                         : options.csv ? info_csv(*snapshot)
                                       : info_text(*snapshot);
    return {std::move(output), std::move(snapshot->problems)};
}

}  // namespace nimba::smi
