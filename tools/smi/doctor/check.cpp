// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/check.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace nimba::smi {
namespace {

// What failed at first: a check that was skipped names it.
std::string cause_of(const Check& cause)
{
    return cause.result == CheckResult::kSkipped ? cause.found
                                                 : fmt::format("because of {}", cause.id);
}

}  // namespace

Check passed(std::string id, std::string found)
{
    return {std::move(id), CheckResult::kOk, std::move(found)};
}

Check noted(std::string id, std::string found, std::string remedy)
{
    return {std::move(id), CheckResult::kNote, std::move(found), std::move(remedy)};
}

Check failed(std::string id, ExitStatus status, std::string found, std::string remedy)
{
    return {std::move(id), CheckResult::kFail, std::move(found), std::move(remedy), status};
}

Check skipped(std::string id, const Check& cause)
{
    return {std::move(id), CheckResult::kSkipped, cause_of(cause)};
}

bool is_obstacle(const Check& check)
{
    return check.result == CheckResult::kFail || check.result == CheckResult::kSkipped;
}

const Check* first_obstacle(std::span<const Check> checks)
{
    const auto found = std::ranges::find_if(checks, is_obstacle);
    return found == checks.end() ? nullptr : &*found;
}

std::vector<Problem> problems_in(std::span<const Section> sections)
{
    std::vector<Problem> problems;
    for (const Section& section : sections) {
        for (const Check& check : section.checks) {
            if (check.result == CheckResult::kFail) {
                problems.push_back({check.status, check.adapter, std::nullopt,
                                    fmt::format("{}: {}", check.id, check.found)});
            }
        }
    }
    return problems;
}

}  // namespace nimba::smi
