// SPDX-License-Identifier: MIT
#include "tools/smi/watch/adapter_panel.hpp"

namespace nimba::smi {

AdapterPanel::AdapterPanel(const Options& options, std::vector<SlotIdentity> adapters,
                           LostWorkers lost)
    : options_{options},
      lost_{lost},
      adapters_{std::move(adapters)},
      workers_{start_workers(options, adapters_)},
      fates_(workers_.size(), Fate::kStays)
{
}

bool AdapterPanel::empty() const
{
    return std::ranges::all_of(fates_, [](Fate fate) { return fate == Fate::kLeftOut; });
}

bool AdapterPanel::is_interrupted(const Reply& reply)
{
    const auto* const lost = std::get_if<Lost>(&reply);
    return lost != nullptr && lost->how == kInterrupted;
}

std::vector<Reply> AdapterPanel::ask_all_adapters(std::string_view request, int stop)
{
    auto replies = ask_all(workers_, request, {options_.timeout, stop});
    tidy_up(options_, adapters_, workers_, replies);
    return replies;
}

void AdapterPanel::renew()
{
    std::vector<SlotIdentity> adapters;
    std::vector<WorkerProcess> workers;
    for (std::size_t i = 0; i < fates_.size(); ++i) {
        if (fates_[i] == Fate::kLeftOut) {
            continue;
        }
        if (fates_[i] == Fate::kReplaced) {
            std::ranges::move(start_workers(options_, {&adapters_[i], 1}),
                              std::back_inserter(workers));
        } else {
            workers.push_back(std::move(workers_[i]));
        }
        adapters.push_back(std::move(adapters_[i]));
    }
    adapters_ = std::move(adapters);
    workers_.swap(workers);
    fates_.assign(workers_.size(), Fate::kStays);
}

}  // namespace nimba::smi
