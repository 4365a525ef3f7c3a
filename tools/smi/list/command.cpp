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

// Asks a worker of its own what the machine has. The worker ends with the answer.
Reply ask_discovery(const Options& options)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    return ask_all({&worker, 1}, kDiscoverRequest, options.timeout).front();
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
    const auto discovery =
        accept<Discovery>({"discovery", std::nullopt}, ask_discovery(options), snapshot.problems);
    return discovery ? assemble(*discovery, ask_adapters(options, discovery->slots)) : snapshot;
}

}  // namespace

Report list_command(const Options& options)
{
    ListSnapshot snapshot = take_snapshot(options);
    return {options.json ? list_json(snapshot) : list_text(snapshot), std::move(snapshot.problems)};
}

}  // namespace nimba::smi
