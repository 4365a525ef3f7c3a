// SPDX-License-Identifier: MIT
#include "tools/smi/process/discover.hpp"

#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/process/worker_process.hpp"
#include "tools/smi/worker/requests.hpp"

namespace nimba::smi {

DiscoveryOutcome discover_adapters(const Options& options, int stop)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    const Reply reply = ask_all({&worker, 1}, kDiscoverRequest, {options.timeout, stop}).front();
    const Subject subject{"discovery", std::nullopt, unfinished_adapter(worker.progress())};
    DiscoveryOutcome outcome;
    const auto* const lost = std::get_if<Lost>(&reply);
    outcome.interrupted = lost != nullptr && lost->how == kInterrupted;
    outcome.discovery = accept<Discovery>(subject, reply, outcome.problems);
    if (!outcome.discovery) {
        outcome.finished = finished_adapters(worker.progress());
    }
    return outcome;
}

}  // namespace nimba::smi
