// SPDX-License-Identifier: MIT
#include "tools/smi/top/command.hpp"

#include "tools/smi/monitor/output.hpp"
#include "tools/smi/process/held_signal.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/snapshot/collector.hpp"
#include "tools/smi/snapshot/json.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/top/screen.hpp"
#include "tools/smi/top/view_loop.hpp"
#include "tools/smi/watch/rhythm.hpp"

#include <unistd.h>

#include <csignal>
#include <string>

namespace nimba::smi {
namespace {

// A document in a line for each sample, without a screen.
Report print_samples(const Options& options)
{
    MonitorOutput output{true};
    // What ends a run must not end the process in the middle of a call of the driver.
    const HeldSignal pipe{SIGPIPE};
    const StopSignals stop{SignalEffect::kEndOfRun};
    Collector collector{options, LostWorkers::kReplaced};
    const Rhythm rhythm{options.top_view.interval, options.top_view.count};
    keep_rhythm(rhythm, stop, [&](uint64_t) {
        const auto snapshot = collector.take(stop.descriptor());
        if (!snapshot) {
            return false;
        }
        for (const Problem& problem : snapshot->problems) {
            output.tell(problem);
        }
        return output.write(json_line(snapshot_json(*snapshot))) && !snapshot->adapters.empty();
    });
    return output.take_report();
}

}  // namespace

Report top_command(const Options& options)
{
    if (options.json) {
        return print_samples(options);
    }
    const std::string fault = top::terminal_fault(STDIN_FILENO, STDOUT_FILENO);
    if (!fault.empty()) {
        return {"", {{ExitStatus::kUsage, std::nullopt, std::nullopt, fault}}};
    }
    // The library's messages would be written over the picture.
    Options quiet = options;
    quiet.verbose = options.verbose && ::isatty(STDERR_FILENO) == 0;
    return {"", top::show_view(quiet)};
}

}  // namespace nimba::smi
