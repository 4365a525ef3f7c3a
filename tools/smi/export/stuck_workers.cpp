// SPDX-License-Identifier: MIT
#include "tools/smi/export/stuck_workers.hpp"

#include <fmt/core.h>

#include <chrono>
#include <utility>

namespace nimba::smi::exporting {

void StuckWorkers::add(std::string_view request, WorkerProcess worker)
{
    if (worker.is_stuck()) {
        workers_.emplace(request, std::move(worker));
    }
}

bool StuckWorkers::has(std::string_view request)
{
    const auto found = workers_.find(request);
    if (found == workers_.end()) {
        return false;
    }
    if (found->second.wait(std::chrono::milliseconds{0})) {
        workers_.erase(found);
        return false;
    }
    return true;
}

Problem stuck_problem(std::string_view collector, const std::string& whose,
                      const std::optional<std::string>& bus_id)
{
    return {ExitStatus::kWorkerLost, bus_id, std::nullopt,
            fmt::format("{}{}{}: the worker that was lost in it is killed but still in the driver; "
                        "it waits for its end: see dmesg",
                        whose, whose.empty() ? "" : ": ", collector)};
}

}  // namespace nimba::smi::exporting
