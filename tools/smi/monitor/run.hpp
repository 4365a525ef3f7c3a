// SPDX-License-Identifier: MIT
// The run of a command that shows samples: one, or one after the other.
#pragma once

#include "tools/smi/monitor/output.hpp"
#include "tools/smi/monitor/printer.hpp"
#include "tools/smi/monitor/snapshot.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/process/held_signal.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/report.hpp"
#include "tools/smi/watch/adapter_panel.hpp"
#include "tools/smi/watch/rhythm.hpp"
#include "tools/smi/worker/payload.hpp"

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {

// What a command asks its workers, and what it makes of their answers.
template <typename Reading, typename Content>
struct MonitorSource {
    std::string_view request;
    std::function<Content(const SlotIdentity&, const Reading&)> content;
    // Samples cover the time since the one before: there is one more in front, which is not shown.
    bool from_first = false;
};

// The rounds of a run: those to show, and the one in front of them.
Rhythm monitor_rhythm(const MonitorOptions& options, bool from_first);

template <typename Reading, typename Content>
class MonitorRun final {
  public:
    MonitorRun(const Options& options, MonitorSource<Reading, Content> source,
               MonitorView<Content> view)
        : options_{options},
          watching_{options.monitor.watch.has_value()},
          source_{std::move(source)},
          printer_{std::move(view), form_of(options), watching_},
          output_{watching_}
    {
    }

    Report run()
    {
        DiscoveryOutcome outcome = discover_adapters(options_);
        std::vector<SlotIdentity> adapters;
        if (outcome.discovery) {
            adapters = chosen_adapters(*outcome.discovery, options_.adapter, outcome.problems);
        }
        tell(outcome.problems);
        if (output_.write(printer_.begin())) {
            take_samples(std::move(adapters));
        }
        return output_.take_report();
    }

  private:
    void take_samples(std::vector<SlotIdentity> adapters)
    {
        // A reader that goes ends the run like a stop signal: behind the tidying up.
        const HeldSignal pipe{SIGPIPE};
        const StopSignals stop{watching_ ? SignalEffect::kEndOfRun : SignalEffect::kEndOfProcess};
        if (adapters.empty()) {
            show({});
            return;
        }
        AdapterPanel panel{options_, std::move(adapters)};
        keep_rhythm(monitor_rhythm(options_.monitor, source_.from_first), stop,
                    [&](uint64_t number) { return take_sample(panel, stop.descriptor(), number); });
    }

    // Returns whether there may be another.
    bool take_sample(AdapterPanel& panel, int stop, uint64_t number)
    {
        auto round = panel.ask<Reading>(source_.request, stop);
        tell(round.problems);
        tell(round.losses);
        std::vector<typename Snapshot<Content>::Entry> entries;
        for (const auto& [adapter, reading] : round.answers) {
            entries.push_back({adapter, source_.content(adapter, reading)});
        }
        if (round.interrupted) {
            return false;
        }
        if (source_.from_first && number == 1 && !panel.empty()) {
            return true;
        }
        return show(std::move(entries)) && !panel.empty();
    }

    bool show(std::vector<typename Snapshot<Content>::Entry> entries)
    {
        return output_.write(printer_.sample(
            {std::chrono::system_clock::now(), std::move(entries), std::exchange(problems_, {})}));
    }

    void tell(const std::vector<Problem>& problems)
    {
        for (const Problem& problem : problems) {
            add_unless_known(problems_, problem);
            output_.tell(problem);
        }
    }

    const Options& options_;
    bool watching_;
    MonitorSource<Reading, Content> source_;
    MonitorPrinter<Content> printer_;
    MonitorOutput output_;
    std::vector<Problem> problems_;  // since the last sample that was shown
};

template <typename Reading, typename Content>
Report run_monitor(const Options& options, MonitorSource<Reading, Content> source,
                   MonitorView<Content> view)
{
    return MonitorRun<Reading, Content>{options, std::move(source), std::move(view)}.run();
}

}  // namespace nimba::smi
