// SPDX-License-Identifier: MIT
#include "tools/smi/watch/problem_log.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <tuple>

namespace nimba::smi {
namespace {

std::string without_digits(std::string text)
{
    std::erase_if(text, [](unsigned char c) { return std::isdigit(c) != 0; });
    return text;
}

}  // namespace

bool is_alike(const Problem& a, const Problem& b)
{
    return std::tie(a.status, a.adapter, a.call) == std::tie(b.status, b.adapter, b.call) &&
           without_digits(a.message) == without_digits(b.message);
}

void ProblemLog::add_to_snapshot(const Problem& problem)
{
    const auto known = std::ranges::find_if(
        repeated_, [&](const Repeated& repeated) { return is_alike(repeated.problem, problem); });
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
