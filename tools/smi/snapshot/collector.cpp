// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/collector.hpp"

#include "tools/smi/memory/snapshot.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/snapshot/problems.hpp"
#include "tools/smi/usage/figures.hpp"
#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <utility>

namespace nimba::smi {
namespace {

void tell(std::vector<Problem>& problems, const std::vector<Problem>& more)
{
    for (const Problem& problem : more) {
        add_unless_told(problems, problem);
    }
}

UsageTable process_table(const SlotIdentity& adapter, MemoryReading reading)
{
    MemorySnapshot memory;
    memory.adapters.push_back({adapter, std::move(reading.allocations), Owners{reading.contexts}});
    return usage_table(memory, std::nullopt);
}

}  // namespace

bool Collector::discover(int stop, std::vector<Problem>& problems)
{
    DiscoveryOutcome outcome = discover_adapters(options_, stop);
    tell(problems, outcome.problems);
    if (!outcome.discovery) {
        return !outcome.interrupted;
    }
    foreign_gpu_ = outcome.discovery->foreign_gpu;
    adapters_ = chosen_adapters(*outcome.discovery, options_.adapter, problems);
    if (!adapters_.empty()) {
        panel_.emplace(options_, adapters_, lost_);
    }
    return true;
}

template <typename Reading, typename Keep>
bool Collector::ask(std::string_view request, int stop, MachineSnapshot& snapshot, Keep keep)
{
    auto round = panel_->ask<Reading>(request, stop);
    tell(snapshot.problems, round.problems);
    tell(snapshot.problems, round.losses);
    for (auto& [adapter, reading] : round.answers) {
        const auto state =
            std::ranges::find(snapshot.adapters, adapter.slot,
                              [](const AdapterState& known) { return known.adapter.slot; });
        state->there = true;
        keep(*state, std::move(reading));
    }
    return !round.interrupted;
}

bool Collector::ask_everything(int stop, MachineSnapshot& snapshot)
{
    const auto keep = [](auto member) {
        return [member](AdapterState& state, auto reading) { state.*member = std::move(reading); };
    };
    const auto keep_segments = [](AdapterState& state, const SegmentReading& reading) {
        state.segments = segment_table(reading);
    };
    const auto keep_counters = [this](AdapterState& state, CounterReading reading) {
        state.rates = frame_rates(reading, meters_[state.adapter.slot].add(reading.frames));
        state.counters = std::move(reading);
    };
    const auto keep_processes = [](AdapterState& state, MemoryReading reading) {
        state.processes = process_table(state.adapter, std::move(reading));
        state.processes_known = true;
    };
    if (!ask<SummaryReading>(kSummaryRequest, stop, snapshot, keep(&AdapterState::summary)) ||
        !ask<ClockReading>(kClocksRequest, stop, snapshot, keep(&AdapterState::clocks))) {
        return false;
    }
    return scope_ == SnapshotScope::kSummaries ||
           (ask<SegmentReading>(kSegmentsRequest, stop, snapshot, keep_segments) &&
            ask<SensorReading>(kSensorsRequest, stop, snapshot, keep(&AdapterState::sensors)) &&
            ask<CounterReading>(kCountersRequest, stop, snapshot, keep_counters) &&
            ask<MemoryReading>(kMemorySampleRequest, stop, snapshot, keep_processes));
}

std::optional<MachineSnapshot> Collector::take(int stop)
{
    MachineSnapshot snapshot;
    if ((!panel_ || panel_->empty()) && !discover(stop, snapshot.problems)) {
        return std::nullopt;
    }
    snapshot.foreign_gpu = foreign_gpu_;
    for (const SlotIdentity& adapter : adapters_) {
        snapshot.adapters.emplace_back().adapter = adapter;
    }
    if (!snapshot.adapters.empty() && !ask_everything(stop, snapshot)) {
        return std::nullopt;
    }
    snapshot.time = std::chrono::system_clock::now();
    return snapshot;
}

}  // namespace nimba::smi
