// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/watch.hpp"

#include "tools/smi/process/discover.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/watch/adapter_panel.hpp"
#include "tools/smi/watch/problem_log.hpp"
#include "tools/smi/watch/rhythm.hpp"
#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace nimba::smi {
namespace {

// Takes one snapshot of all adapters.
void take_snapshot(AdapterPanel& panel, const StopSignals& stop, LeaksResult& result,
                   ProblemLog& log)
{
    auto round = panel.ask<LeakReading>(kLeaksRequest, stop.descriptor());
    for (const auto& [adapter, reading] : round.answers) {
        std::ranges::find(result.adapters, adapter, &AdapterHistory::adapter)->add(reading);
    }
    std::ranges::for_each(round.problems, [&](const auto& p) { log.add_to_snapshot(p); });
    for (Problem& loss : round.losses) {
        log.add_at_snapshot(std::move(loss), result.snapshots);
    }
}

}  // namespace

LeaksResult watch_for_leaks(const Options& options, const SnapshotListener& listener)
{
    LeaksResult result;
    DiscoveryOutcome outcome = discover_adapters(options);
    result.problems = std::move(outcome.problems);
    if (!outcome.discovery) {
        return result;
    }
    auto slots = chosen_adapters(*outcome.discovery, options.adapter, result.problems);
    if (slots.empty()) {
        return result;
    }
    result.adapters = std::vector<AdapterHistory>(slots.begin(), slots.end());
    // One look is over by itself: a signal meanwhile is for who looks, which may be a capture.
    const StopSignals stop{options.leaks.count == 1 ? SignalEffect::kEndOfProcess
                                                    : SignalEffect::kEndOfRun};
    ProblemLog log;
    AdapterPanel panel{options, std::move(slots)};
    keep_rhythm({options.leaks.interval, options.leaks.count}, stop, [&](uint64_t number) {
        result.snapshots = number;
        take_snapshot(panel, stop, result, log);
        listener(number, result.adapters);
        return !panel.empty();
    });
    std::ranges::move(log.problems(result.snapshots), std::back_inserter(result.problems));
    return result;
}

}  // namespace nimba::smi
