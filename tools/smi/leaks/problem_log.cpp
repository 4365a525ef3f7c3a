// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/problem_log.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace nimba::smi {

void ProblemLog::add_to_snapshot(const Problem& problem)
{
    const auto known = std::ranges::find_if(repeated_, [&](const Repeated& repeated) {
        return repeated.problem.message == problem.message;
    });
    if (known == repeated_.end()) {
        repeated_.push_back({problem, 1});
    } else {
        ++known->times;
    }
}

void ProblemLog::add_at_snapshot(Problem problem, uint64_t number)
{
    final_.push_back({std::move(problem), number});
}

std::vector<Problem> ProblemLog::problems(uint64_t snapshots) const
{
    std::vector<Problem> all;
    for (const auto& [problem, times] : repeated_) {
        all.push_back(problem);
        if (times < snapshots) {
            all.back().message += fmt::format(" (in {} of {} snapshots)", times, snapshots);
        }
    }
    for (const auto& [problem, number] : final_) {
        all.push_back(problem);
        if (snapshots > 1) {
            all.back().message += fmt::format(" (at snapshot {} of {})", number, snapshots);
        }
    }
    return all;
}

}  // namespace nimba::smi
