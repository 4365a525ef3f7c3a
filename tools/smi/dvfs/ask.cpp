// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/ask.hpp"

#include "tools/smi/process/discover.hpp"

#include <fmt/core.h>

namespace nimba::smi {

std::vector<SlotIdentity> adapters_to_show(const Options& options, std::vector<Problem>& problems)
{
    DiscoveryOutcome outcome = discover_adapters(options);
    problems = std::move(outcome.problems);
    return outcome.discovery ? chosen_adapters(*outcome.discovery, options.adapter, problems)
                             : std::vector<SlotIdentity>{};
}

std::optional<SlotIdentity> adapter_to_change(const Options& options,
                                              std::vector<Problem>& problems)
{
    const auto slots = adapters_to_show(options, problems);
    if (slots.size() > 1) {
        problems.push_back(
            {ExitStatus::kUsage, std::nullopt, std::nullopt,
             fmt::format("there are {} adapters: choose one with --adapter; nimba-smi list shows "
                         "them",
                         slots.size())});
    }
    return slots.size() == 1 ? std::optional(slots.front()) : std::nullopt;
}

}  // namespace nimba::smi
