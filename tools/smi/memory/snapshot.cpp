// SPDX-License-Identifier: MIT
#include "tools/smi/memory/snapshot.hpp"

#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <iterator>
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
    auto workers = start_workers(options, slots);
    const auto replies = ask_all(workers, kMemoryRequest, {options.timeout});
    tidy_up(options, slots, workers, replies);
    for (std::size_t i = 0; i < slots.size(); ++i) {
        take_reply(slots[i], replies[i], snapshot);
    }
    return snapshot;
}

}  // namespace nimba::smi
