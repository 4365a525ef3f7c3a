// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <vector>

namespace nimba::smi {

// What a worker of its own said about the machine.
struct DiscoveryOutcome {
    std::optional<Discovery> discovery;
    std::vector<Adapter> finished;  // when it was lost: the adapters that it had found until then
    std::vector<Problem> problems;  // why there is no discovery
    bool interrupted = false;       // it was given up because the user wanted to end
};

// Asks a worker, which ends with the answer, what adapters the machine has. `stop`: see Patience.
DiscoveryOutcome discover_adapters(const Options& options, int stop = -1);

}  // namespace nimba::smi
