// SPDX-License-Identifier: MIT
#include "tools/smi/list/command.hpp"

#include "tools/smi/list/assemble.hpp"
#include "tools/smi/list/render.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/worker/requests.hpp"

#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

// Asks one worker for each slot, all at the same time.
std::vector<Reply> ask_adapters(const Options& options, const std::vector<SlotIdentity>& slots)
{
    std::vector<WorkerProcess> workers;
    workers.reserve(slots.size());
    for (const SlotIdentity& identity : slots) {
        workers.emplace_back(WorkerOptions{options.library, options.verbose,
                                           ServedAdapter{identity.slot, identity.bus_id}});
    }
    return ask_all(workers, kDescribeRequest, {options.timeout});
}

ListSnapshot take_snapshot(const Options& options)
{
    DiscoveryOutcome outcome = discover_adapters(options);
    if (!outcome.discovery) {
        return {std::move(outcome.finished), std::nullopt, std::move(outcome.problems)};
    }
    Discovery discovery = *std::move(outcome.discovery);
    if (options.adapter) {
        // What else discovery saw does not concern the adapter that was chosen.
        std::vector<Problem> problems;
        Discovery chosen;
        chosen.slots = chosen_adapters(discovery, options.adapter, problems);
        if (chosen.slots.empty()) {
            return {{}, std::nullopt, std::move(problems)};
        }
        discovery = std::move(chosen);
    }
    return assemble(discovery, ask_adapters(options, discovery.slots));
}

}  // namespace

Report list_command(const Options& options)
{
    ListSnapshot snapshot = take_snapshot(options);
    std::string output = options.json  ? list_json(snapshot)
                         : options.csv ? list_csv(snapshot)
                                       : list_text(snapshot);
    return {std::move(output), std::move(snapshot.problems)};
}

}  // namespace nimba::smi
