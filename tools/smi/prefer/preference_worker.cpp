// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/preference_worker.hpp"

#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"

#include <utility>

namespace nimba::smi {

PreferenceWorker::PreferenceWorker(const Options& options, std::string home, int stop)
    : worker_{{options.library, options.verbose, std::nullopt}},
      home_{std::move(home)},
      timeout_{options.timeout},
      stop_{stop}
{
}

std::optional<std::vector<Preference>> PreferenceWorker::ask(std::string_view request,
                                                             const Preference& preference,
                                                             std::vector<Problem>& problems)
{
    const Reply reply =
        ask_all({&worker_, 1}, request_text(request, {home_, preference}), {timeout_, stop_})
            .front();
    auto list =
        accept<PreferenceList>({"preferences", std::nullopt, std::nullopt}, reply, problems);
    return list ? std::optional(std::move(list->preferences)) : std::nullopt;
}

}  // namespace nimba::smi
