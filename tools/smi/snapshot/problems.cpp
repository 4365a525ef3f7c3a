// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/problems.hpp"

#include "tools/smi/watch/problem_log.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace nimba::smi {
namespace {

constexpr std::string_view kOpening = "open ";
constexpr std::string_view kInit = "gfx_global_init";

// What fails as a whole, and for every question alike: each says what it misses itself.
bool fails_as_a_whole(const std::optional<std::string>& call)
{
    return call && (call->starts_with(kOpening) || *call == kInit);
}

bool has_same_words(const Problem& told, const Problem& problem)
{
    return std::tie(told.status, told.adapter, told.message) ==
           std::tie(problem.status, problem.adapter, problem.message);
}

bool has_same_cause(const Problem& told, const Problem& problem)
{
    return fails_as_a_whole(problem.call) &&
           std::tie(told.status, told.adapter, told.call) ==
               std::tie(problem.status, problem.adapter, problem.call);
}

}  // namespace

void add_unless_told(std::vector<Problem>& problems, const Problem& problem)
{
    const bool is_told = std::ranges::any_of(problems, [&](const Problem& told) {
        return is_alike(told, problem) || has_same_words(told, problem) ||
               has_same_cause(told, problem);
    });
    if (!is_told) {
        problems.push_back(problem);
    }
}

}  // namespace nimba::smi
