// SPDX-License-Identifier: MIT
#include "tools/smi/export/problem_lines.hpp"

#include "tools/smi/watch/problem_log.hpp"

#include <algorithm>
#include <utility>

namespace nimba::smi::exporting {

std::vector<Problem> ProblemLines::news(std::span<const Problem> problems)
{
    std::vector<Problem> news;
    for (const Problem& problem : problems) {
        const auto is_known = [&](const Problem& known) { return is_alike(known, problem); };
        if (std::ranges::none_of(last_, is_known) && std::ranges::none_of(news, is_known)) {
            news.push_back(problem);
        }
    }
    last_.assign(problems.begin(), problems.end());
    return news;
}

}  // namespace nimba::smi::exporting
