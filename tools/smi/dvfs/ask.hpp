// SPDX-License-Identifier: MIT
// The workers of the adapters whose settings are shown or changed.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {

// The adapters that the options choose, or all; `problems` gets why there are none.
std::vector<SlotIdentity> adapters_to_show(const Options& options, std::vector<Problem>& problems);

// The one adapter that the options choose or that there is. Of several one has to be chosen: then,
// and when there is none, there is nothing but problems.
std::optional<SlotIdentity> adapter_to_change(const Options& options,
                                              std::vector<Problem>& problems);

// The reading when the worker found its adapter; otherwise a problem.
template <typename Reading>
std::optional<Reading> of_this_adapter(const Subject& subject, std::optional<Reading> reading,
                                       std::vector<Problem>& problems)
{
    if (reading && reading->bus_id != subject.bus_id) {
        problems.push_back(gone_problem(subject));
        return std::nullopt;
    }
    return reading;
}

// What each of the adapters answers to one request, all asked at the same time. Those that give no
// reading add problems.
template <typename Reading>
std::vector<std::pair<SlotIdentity, Reading>> ask_adapters_for(std::string_view request,
                                                               const Options& options,
                                                               std::vector<Problem>& problems)
{
    std::vector<std::pair<SlotIdentity, Reading>> readings;
    const auto slots = adapters_to_show(options, problems);
    auto workers = start_workers(options, slots);
    const auto replies = ask_all(workers, request, {options.timeout});
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const Subject subject = adapter_subject(slots[i]);
        if (auto reading = of_this_adapter(subject, accept<Reading>(subject, replies[i], problems),
                                           problems)) {
            readings.emplace_back(slots[i], *std::move(reading));
        }
    }
    return readings;
}

// The worker of one adapter, for several requests. As long as it lives, signals wait: what was
// begun is done.
class AdapterWorker final {
  public:
    AdapterWorker(const Options& options, const SlotIdentity& adapter)
        : subject_{adapter_subject(adapter)},
          worker_{{options.library, options.verbose, ServedAdapter{adapter.slot, adapter.bus_id}}},
          timeout_{options.timeout}
    {
    }

    [[nodiscard]] const Subject& subject() const { return subject_; }

    // The answer; nothing, and a problem, when there is none.
    template <typename Payload>
    std::optional<Payload> ask(std::string_view request, std::vector<Problem>& problems)
    {
        const Reply reply =
            ask_all({&worker_, 1}, request, {timeout_, signals_.descriptor()}).front();
        return accept<Payload>(subject_, reply, problems);
    }

  private:
    StopSignals signals_{SignalEffect::kEndOfProcess};
    Subject subject_;
    WorkerProcess worker_;
    std::chrono::milliseconds timeout_;
};

}  // namespace nimba::smi
