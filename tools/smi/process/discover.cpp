// SPDX-License-Identifier: MIT
#include "tools/smi/process/discover.hpp"

#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/requests.hpp"

namespace nimba::smi {

DiscoveryOutcome discover_adapters(const Options& options)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    const Reply reply = ask_all({&worker, 1}, kDiscoverRequest, {options.timeout}).front();
    const Subject subject{"discovery", std::nullopt, unfinished_adapter(worker.progress())};
    DiscoveryOutcome outcome;
    outcome.discovery = accept<Discovery>(subject, reply, outcome.problems);
    if (!outcome.discovery) {
        outcome.finished = finished_adapters(worker.progress());
    }
    return outcome;
}

}  // namespace nimba::smi
