// SPDX-License-Identifier: MIT
#include "tools/smi/memory/snapshot.hpp"

#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

namespace nimba::smi {
namespace {

void take_reply(const SlotIdentity& slot, const Reply& reply, MemorySnapshot& snapshot)
{
    const Subject subject = adapter_subject(slot);
    auto reading = accept<MemoryReading>(subject, reply, snapshot.problems);
    if (!reading) {
        return;
    }
    std::ranges::move(reading_problems(subject, *reading), std::back_inserter(snapshot.problems));
    if (is_there(subject, *reading)) {
        snapshot.adapters.push_back(
            {slot, std::move(reading->allocations), Owners{reading->contexts}});
    }
}

// A signal ends the process only behind the tidying up.
std::vector<Reply> ask_for_memory(const Options& options, std::span<const SlotIdentity> slots)
{
    const StopSignals stop{SignalEffect::kEndOfProcess};
    auto workers = start_workers(options, slots);
    auto replies = ask_all(workers, kMemoryRequest, {options.timeout, stop.descriptor()});
    tidy_up(options, slots, workers, replies);
    return replies;
}

}  // namespace

MemorySnapshot take_memory_snapshot(const Options& options)
{
    MemorySnapshot snapshot;
    DiscoveryOutcome outcome = discover_adapters(options);
    snapshot.problems = std::move(outcome.problems);
    if (!outcome.discovery) {
        return snapshot;
    }
    const auto slots = chosen_adapters(*outcome.discovery, options.adapter, snapshot.problems);
    const auto replies = ask_for_memory(options, slots);
    for (std::size_t i = 0; i < slots.size(); ++i) {
        take_reply(slots[i], replies[i], snapshot);
    }
    return snapshot;
}

}  // namespace nimba::smi
