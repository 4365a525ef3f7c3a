// SPDX-License-Identifier: MIT
#include "tools/smi/list/assemble.hpp"

#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/process/discovery_problems.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

struct DeniedInfo {
    std::string bus_id;
    std::string path;
};

// One hint for all adapters: they have the same reason and the same remedy.
Problem denied_info(std::span<const DeniedInfo> denied)
{
    std::vector<std::string> paths;
    for (const DeniedInfo& info : denied) {
        paths.push_back(info.path);
    }
    const auto only = denied.size() == 1 ? std::optional(denied.front().bus_id) : std::nullopt;
    return {ExitStatus::kNoPermission, only, "open",
            fmt::format("no permission to read {}, so the driver kind is unknown: run as root",
                        fmt::join(paths, ", "))};
}

}  // namespace

ListSnapshot assemble(const Discovery& discovery, std::span<const Reply> replies)
{
    ListSnapshot snapshot;
    snapshot.foreign_gpu = discovery.foreign_gpu;
    snapshot.problems = discovery_problems(discovery);
    std::vector<DeniedInfo> denied;
    for (std::size_t i = 0; i < replies.size(); ++i) {
        const Subject subject = adapter_subject(discovery.slots[i]);
        auto description = accept<Description>(subject, replies[i], snapshot.problems);
        if (!description) {
            continue;
        }
        if (!description->adapter || description->adapter->bus_id != subject.bus_id) {
            snapshot.problems.push_back(gone_problem(subject));
            continue;
        }
        if (description->denied_info) {
            denied.push_back({*subject.bus_id, *description->denied_info});
        }
        snapshot.adapters.push_back(*std::move(description->adapter));
    }
    if (!denied.empty()) {
        snapshot.problems.push_back(denied_info(denied));
    }
    return snapshot;
}

}  // namespace nimba::smi
