// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/process/worker_process.hpp"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi::exporting {

// Workers that were killed and stay all the same, for as long as a driver holds them. What they
// were asked is not asked again meanwhile, so that there is never more than one for each question.
class StuckWorkers final {
  public:
    // A worker that was asked this and has answered, or was lost. It is kept if it is stuck.
    void add(std::string_view request, WorkerProcess worker);

    // Whether there is one that was asked this.
    bool has(std::string_view request);

  private:
    std::map<std::string_view, WorkerProcess> workers_;
};

// Why a collector is not run; `whose` is the adapter, or empty.
Problem stuck_problem(std::string_view collector, const std::string& whose,
                      const std::optional<std::string>& bus_id);

}  // namespace nimba::smi::exporting
