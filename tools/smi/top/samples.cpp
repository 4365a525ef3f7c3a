// SPDX-License-Identifier: MIT
#include "tools/smi/top/samples.hpp"

#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/top/gauges.hpp"

#include <algorithm>
#include <utility>

namespace nimba::smi::top {
namespace {

constexpr std::size_t kSamples = 4096;  // as many as a very wide terminal shows

double seconds_between(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

}  // namespace

Samples::Samples(Clock::time_point now) : opened_{now}, last_{now}, times_{kSamples} {}

void Samples::take(MachineSnapshot snapshot, Clock::time_point now)
{
    events_.take(snapshot);
    times_.add(seconds_between(opened_, now));
    for (const AdapterState& state : snapshot.adapters) {
        auto& histories = histories_[state.adapter.slot];
        histories.resize(kGaugeCount, History{kSamples});
        for (std::size_t gauge = 0; gauge < kGaugeCount; ++gauge) {
            histories[gauge].add(gauges()[gauge].value(state));
        }
    }
    keep_processes(snapshot);
    newest_ = std::move(snapshot);
    last_ = now;
}

void Samples::leave_gap()
{
    times_.add(std::nullopt);
    for (auto& [slot, histories] : histories_) {
        std::ranges::for_each(histories, [](History& history) { history.add(std::nullopt); });
    }
}

// An adapter that answers but whose processes could not be read has those that it had before.
void Samples::keep_processes(MachineSnapshot& snapshot)
{
    for (AdapterState& state : snapshot.adapters) {
        const int slot = state.adapter.slot;
        if (state.processes_known) {
            processes_[slot] = {state.processes, snapshot.time};
        } else if (is_silent(state)) {
            processes_.erase(slot);
        } else if (const auto known = processes_.find(slot); known != processes_.end()) {
            state.processes = known->second.table;
        }
    }
}

std::optional<std::chrono::system_clock::time_point> Samples::processes_time(
    const AdapterState& adapter) const
{
    if (adapter.processes_known) {
        return std::nullopt;
    }
    const auto known = processes_.find(adapter.adapter.slot);
    return known == processes_.end() ? std::nullopt : std::optional(known->second.time);
}

const History& Samples::history(const AdapterState& adapter, std::size_t gauge) const
{
    return histories_.at(adapter.adapter.slot)[gauge];
}

}  // namespace nimba::smi::top
