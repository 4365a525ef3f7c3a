// SPDX-License-Identifier: MIT
#include "tools/smi/export/problem_lines.hpp"

#include "tools/smi/watch/problem_log.hpp"

#include <algorithm>
#include <utility>

namespace nimba::smi::exporting {
namespace {

// Each of those that no known one is like, once.
std::vector<Problem> not_among(std::span<const Problem> known, std::span<const Problem> problems)
{
    std::vector<Problem> news;
    for (const Problem& problem : problems) {
        const auto is_like_it = [&](const Problem& other) { return is_alike(other, problem); };
        if (std::ranges::none_of(known, is_like_it) && std::ranges::none_of(news, is_like_it)) {
            news.push_back(problem);
        }
    }
    return news;
}

}  // namespace

std::vector<Problem> ProblemLines::news(std::span<const Problem> problems)
{
    auto news = not_among(last_, problems);
    last_.assign(problems.begin(), problems.end());
    return news;
}

std::vector<Problem> ProblemLines::never_told(std::span<const Problem> problems)
{
    auto news = not_among(ever_, problems);
    ever_.insert(ever_.end(), news.begin(), news.end());
    return news;
}

}  // namespace nimba::smi::exporting
