// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/prefer/preference.hpp"
#include "tools/smi/process/worker_process.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

// A worker for the preferences of one home directory. Its library loads them once.
class PreferenceWorker final {
  public:
    // `stop` becomes readable when the user wants to end.
    PreferenceWorker(const Options& options, std::string home, int stop = -1);

    // What the library holds after the request; nothing, and a problem, without an answer.
    std::optional<std::vector<Preference>> ask(std::string_view request,
                                               const Preference& preference,
                                               std::vector<Problem>& problems);

  private:
    WorkerProcess worker_;
    std::string home_;
    std::chrono::milliseconds timeout_;
    int stop_;
};

}  // namespace nimba::smi
