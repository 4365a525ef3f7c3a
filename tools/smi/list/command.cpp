// SPDX-License-Identifier: MIT
#include "tools/smi/list/command.hpp"

#include "tools/smi/list/assemble.hpp"
#include "tools/smi/list/render.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/requests.hpp"

#include <vector>

namespace nimba::smi {
namespace {

// Asks a worker of its own what the machine has. The worker ends with the answer. When it is lost,
// the snapshot gets what it had found until then.
std::optional<Discovery> ask_discovery(const Options& options, ListSnapshot& snapshot)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    const Reply reply = ask_all({&worker, 1}, kDiscoverRequest, options.timeout).front();
    const Subject subject{"discovery", std::nullopt, unfinished_adapter(worker.progress())};
    auto discovery = accept<Discovery>(subject, reply, snapshot.problems);
    if (!discovery) {
        snapshot.adapters = finished_adapters(worker.progress());
    }
    return discovery;
}

// Asks one worker for each slot, all at the same time.
std::vector<Reply> ask_adapters(const Options& options, const std::vector<SlotIdentity>& slots)
{
    std::vector<WorkerProcess> workers;
    workers.reserve(slots.size());
    for (const SlotIdentity& identity : slots) {
        workers.emplace_back(WorkerOptions{options.library, options.verbose, identity.slot});
    }
    return ask_all(workers, kDescribeRequest, options.timeout);
}

ListSnapshot take_snapshot(const Options& options)
{
    ListSnapshot snapshot;
    const auto discovery = ask_discovery(options, snapshot);
    return discovery ? assemble(*discovery, ask_adapters(options, discovery->slots)) : snapshot;
}

}  // namespace

Report list_command(const Options& options)
{
    ListSnapshot snapshot = take_snapshot(options);
    return {options.json ? list_json(snapshot) : list_text(snapshot), std::move(snapshot.problems)};
}

}  // namespace nimba::smi
