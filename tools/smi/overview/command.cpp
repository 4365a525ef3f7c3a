// SPDX-License-Identifier: MIT
#include "tools/smi/overview/command.hpp"

#include "tools/smi/monitor/output.hpp"
#include "tools/smi/monitor/run.hpp"
#include "tools/smi/overview/printer.hpp"
#include "tools/smi/overview/style.hpp"
#include "tools/smi/process/held_signal.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/snapshot/collector.hpp"
#include "tools/smi/watch/rhythm.hpp"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>

namespace nimba::smi {
namespace {

bool is_of_silent_driver(const Problem& problem)
{
    return problem.status == ExitStatus::kNoAdapter && problem.adapter;
}

// Who chose an adapter that is not there was told where to see the others.
bool needs_hint(const Options& options, const MachineSnapshot& snapshot)
{
    return snapshot.adapters.empty() ? !options.adapter
                                     : std::ranges::any_of(snapshot.problems, is_of_silent_driver);
}

Problem doctor_hint()
{
    return {ExitStatus::kOk, std::nullopt, std::nullopt,
            "run nimba-smi doctor: it says what is missing, and how to mend it"};
}

class OverviewRun final {
  public:
    explicit OverviewRun(const Options& options)
        : options_{options},
          watching_{options.monitor.watch.has_value()},
          printer_{form_of(options), watching_, options.top, style_of(STDOUT_FILENO)},
          output_{watching_}
    {
    }

    Report run()
    {
        // A reader that goes ends the run like a stop signal: behind the tidying up.
        const HeldSignal pipe{SIGPIPE};
        const StopSignals stop{watching_ ? SignalEffect::kEndOfRun : SignalEffect::kEndOfProcess};
        // Its workers tidy up before a signal takes effect.
        Collector collector{options_, LostWorkers::kLeftOut};
        if (output_.write(printer_.begin())) {
            keep_rhythm(monitor_rhythm(options_.monitor, false), stop,
                        [&](uint64_t /*number*/) { return show(collector, stop.descriptor()); });
        }
        return output_.take_report();
    }

  private:
    // Returns whether there may be another.
    bool show(Collector& collector, int stop)
    {
        auto snapshot = collector.take(stop);
        if (!snapshot) {
            return false;
        }
        if (needs_hint(options_, *snapshot)) {
            snapshot->problems.push_back(doctor_hint());
        }
        for (const Problem& problem : snapshot->problems) {
            output_.tell(problem);
        }
        return output_.write(printer_.snapshot(*snapshot)) && !snapshot->adapters.empty();
    }

    const Options& options_;
    bool watching_;
    OverviewPrinter printer_;
    MonitorOutput output_;
};

}  // namespace

Report overview_command(const Options& options)
{
    return OverviewRun{options}.run();
}

}  // namespace nimba::smi
