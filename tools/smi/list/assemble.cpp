// SPDX-License-Identifier: MIT
#include "tools/smi/list/assemble.hpp"

#include "tools/smi/process/diagnosis.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

Problem denied_node(const DeniedFile& node)
{
    const std::string group =
        node.group.empty() ? "" : fmt::format("join the group \"{}\" or ", node.group);
    return {ExitStatus::kNoPermission, std::nullopt, "open",
            fmt::format("no permission to open {}: {}run as root", node.path, group)};
}

std::vector<Problem> discovery_problems(const Discovery& discovery)
{
    std::vector<Problem> problems;
    if (!discovery.libdrm_usable) {
        problems.push_back({ExitStatus::kNoLibdrm, std::nullopt, "gpuinfo_nimba_init",
                            "libdrm is missing or unusable, so no GPU can be found: install the "
                            "package libdrm2"});
    }
    for (const DeniedFile& node : discovery.denied_nodes) {
        problems.push_back(denied_node(node));
    }
    // With a problem above, an adapter may well be there.
    if (discovery.slots.empty() && problems.empty()) {
        problems.push_back({ExitStatus::kNoAdapter, std::nullopt, "gfx_find_adapter",
                            "no Nimba or QV adapter found: check that the card is seated (lspci) "
                            "and its driver is loaded (dmesg)"});
    }
    return problems;
}

Problem gone(const Subject& subject)
{
    return {ExitStatus::kNoAdapter, subject.bus_id, "gfx_find_adapter",
            fmt::format("{}: gone since discovery; run the command again", subject.name)};
}

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
            snapshot.problems.push_back(gone(subject));
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
