// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/watch.hpp"

#include "tools/smi/leaks/problem_log.hpp"
#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;

// The run over all snapshots.
class Watch final {
  public:
    Watch(const Options& options, std::vector<SlotIdentity> slots)
        : options_{options}, watched_{std::move(slots)}, workers_{start_workers(options, watched_)}
    {
        for (const SlotIdentity& slot : watched_) {
            histories_.emplace_back(slot);
        }
    }

    // Takes one snapshot after the other. With no worker left, no more are taken.
    void run(const StopSignals& stop, ProblemLog& log, const SnapshotListener& listener)
    {
        auto next = Clock::now();
        do {
            take_snapshot(stop.descriptor(), log);
            listener(snapshots_, histories_);
            next = std::max(next + options_.leaks.interval, Clock::now());
        } while (wants_more() && !stop.wait_until(next));
    }

    [[nodiscard]] uint64_t snapshots() const { return snapshots_; }
    [[nodiscard]] std::vector<AdapterHistory> take_histories() { return std::move(histories_); }

  private:
    [[nodiscard]] bool wants_more() const
    {
        return !workers_.empty() && snapshots_ < options_.leaks.count.value_or(UINT64_MAX);
    }

    void take_snapshot(int stop, ProblemLog& log)
    {
        ++snapshots_;
        const auto replies = ask_all(workers_, kLeaksRequest, {options_.timeout, stop});
        tidy_up(options_, watched_, workers_, replies);
        std::vector<SlotIdentity> watched;
        std::vector<WorkerProcess> workers;
        for (std::size_t i = 0; i < replies.size(); ++i) {
            if (take_reply(watched_[i], replies[i], log)) {
                watched.push_back(std::move(watched_[i]));
                workers.push_back(std::move(workers_[i]));
            }
        }
        watched_ = std::move(watched);
        workers_.swap(workers);
    }

    // Returns whether the worker can be asked again.
    bool take_reply(const SlotIdentity& slot, const Reply& reply, ProblemLog& log)
    {
        const Subject subject = adapter_subject(slot);
        if (auto problem = diagnose(subject, reply)) {
            return take_problem(*std::move(problem), reply, log);
        }
        std::vector<Problem> problems;
        const auto reading = accept<LeakReading>(subject, reply, problems);
        if (!reading) {
            return take_problem(std::move(problems.front()), reply, log);
        }
        for (const Problem& problem : reading_problems(subject, *reading)) {
            log.add_to_snapshot(problem);
        }
        if (is_there(subject, *reading)) {
            std::ranges::find(histories_, slot.slot, slot_of)->add(*reading);
        }
        return true;
    }

    bool take_problem(Problem problem, const Reply& reply, ProblemLog& log) const
    {
        const auto* const lost = std::get_if<Lost>(&reply);
        if (lost != nullptr && lost->how == kInterrupted) {
            return false;
        }
        if (problem.status == ExitStatus::kWorkerLost) {
            log.add_at_snapshot(std::move(problem), snapshots_);
            return false;
        }
        log.add_to_snapshot(problem);
        return true;
    }

    static int slot_of(const AdapterHistory& history) { return history.adapter().slot; }

    const Options& options_;
    std::vector<SlotIdentity> watched_;  // the adapters that the workers serve, in their order
    std::vector<WorkerProcess> workers_;
    std::vector<AdapterHistory> histories_;
    uint64_t snapshots_ = 0;
};

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
    const StopSignals stop{SignalEffect::kEndOfRun};
    ProblemLog log;
    Watch watch{options, std::move(slots)};
    watch.run(stop, log, listener);
    result.snapshots = watch.snapshots();
    result.adapters = watch.take_histories();
    std::ranges::move(log.problems(result.snapshots), std::back_inserter(result.problems));
    return result;
}

}  // namespace nimba::smi
