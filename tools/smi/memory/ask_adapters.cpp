// SPDX-License-Identifier: MIT
#include "tools/smi/memory/ask_adapters.hpp"

#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>

namespace nimba::smi {
namespace {

// The user has waited for the lost worker already.
constexpr std::chrono::milliseconds kTidyTime{5000};

}  // namespace

std::vector<WorkerProcess> start_workers(const Options& options,
                                         std::span<const SlotIdentity> slots)
{
    std::vector<WorkerProcess> workers;
    workers.reserve(slots.size());
    for (const SlotIdentity& identity : slots) {
        workers.emplace_back(WorkerOptions{options.library, options.verbose,
                                           ServedAdapter{identity.slot, identity.bus_id}});
    }
    return workers;
}

void tidy_up(const Options& options, std::span<const SlotIdentity> slots,
             std::span<const WorkerProcess> workers, std::span<const Reply> replies)
{
    std::vector<SlotIdentity> left;
    for (std::size_t i = 0; i < workers.size(); ++i) {
        if (std::holds_alternative<Lost>(replies[i]) && workers[i].progress().entered) {
            left.push_back(slots[i]);
        }
    }
    // Nothing more can be done for one that is lost again.
    auto tidying = start_workers(options, left);
    static_cast<void>(ask_all(tidying, kTidyRequest, {std::min(options.timeout, kTidyTime)}));
}

std::vector<Problem> reading_problems(const Subject& subject, const AdapterReading& reading)
{
    if (!is_there(subject, reading)) {
        return {gone_problem(subject)};
    }
    std::vector<Problem> problems;
    for (const Failure& remark : reading.remarks) {
        problems.push_back({remark.status, subject.bus_id, remark.call,
                            fmt::format("{}: {}", subject.name, remark.message)});
    }
    return problems;
}

bool is_there(const Subject& subject, const AdapterReading& reading)
{
    return reading.bus_id == subject.bus_id;
}

}  // namespace nimba::smi
