// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/growth.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace nimba::smi {
namespace {

constexpr std::size_t kOwnersShown = 3;
constexpr uint64_t kSnapshotsToCompare = 2;

void append_names(const GroupOwner& owner, std::vector<std::string>& names)
{
    if (owner.processes.empty()) {
        names.push_back("device " + handle_text(owner.device));
    }
    for (const Process& process : owner.processes) {
        std::string name = process.name.empty() ? fmt::format("process {}", process.pid)
                                                : fmt::format("{} ({})", process.name, process.pid);
        // A process may hold several devices.
        if (std::ranges::find(names, name) == names.end()) {
            names.push_back(std::move(name));
        }
    }
}

std::string growth_text(const GroupGrowth& group)
{
    return fmt::format("{} more allocation{} of {} than in the first snapshot, held by {}",
                       group.change, group.change == 1 ? "" : "s", shape_text(group.shape),
                       owners_text(group.owners));
}

}  // namespace

std::vector<Problem> growth_problems(const LeaksResult& result, uint64_t limit)
{
    std::vector<Problem> problems;
    for (const AdapterHistory& history : result.adapters) {
        auto groups = history.groups();
        std::erase_if(groups, [&](const GroupGrowth& group) {
            return group.change < 0 || static_cast<uint64_t>(group.change) < limit;
        });
        if (groups.empty()) {
            continue;
        }
        const Subject subject = adapter_subject(history.adapter());
        std::string message = fmt::format("{}: {}", subject.name, growth_text(groups.front()));
        if (groups.size() > 1) {
            message += fmt::format("; groups that grew by {} or more: {}", limit, groups.size());
        }
        problems.push_back(
            {ExitStatus::kGrowth, subject.bus_id, "get_memleak_info", std::move(message)});
    }
    return problems;
}

std::optional<Problem> too_short_problem(const LeaksResult& result)
{
    const bool too_short = std::ranges::any_of(result.adapters, [](const AdapterHistory& history) {
        return history.snapshots() < kSnapshotsToCompare;
    });
    if (!too_short || overall_status(result.problems) != ExitStatus::kOk) {
        return std::nullopt;
    }
    return Problem{ExitStatus::kFailed, std::nullopt, "get_memleak_info",
                   "the run ended before its second snapshot: --fail-on-growth had nothing to "
                   "compare"};
}

std::string shape_text(const Shape& shape)
{
    return fmt::format("{}x{}, {}, format {}, type {}", shape.width, shape.height,
                       size_text(shape.size), shape.hw_format, shape.at_type);
}

std::string owners_text(const std::vector<GroupOwner>& owners)
{
    std::vector<std::string> names;
    for (const GroupOwner& owner : owners) {
        append_names(owner, names);
    }
    if (names.size() <= kOwnersShown) {
        return fmt::format("{}", fmt::join(names, ", "));
    }
    const std::size_t more = names.size() - kOwnersShown;
    names.resize(kOwnersShown);
    return fmt::format("{} and {} more", fmt::join(names, ", "), more);
}

}  // namespace nimba::smi
