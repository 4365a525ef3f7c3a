// SPDX-License-Identifier: MIT
#include "tools/smi/list/assemble.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/process/diagnosis.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

std::string how_to_get_in(const DeniedFile& file)
{
    return file.group.empty() ? "run as root"
                              : fmt::format("join the group \"{}\" or run as root", file.group);
}

Problem denied_node(const DeniedFile& node)
{
    return {ExitStatus::kNoPermission, std::nullopt, "open",
            fmt::format("no permission to open {}: {}", node.path, how_to_get_in(node))};
}

Problem denied_directory(const DeniedFile& directory)
{
    return {ExitStatus::kNoPermission, std::nullopt, "open",
            fmt::format("no permission to look into {}, so no GPU can be found: {}", directory.path,
                        how_to_get_in(directory))};
}

Problem no_answer(const std::string& bus_id)
{
    return {ExitStatus::kNoAdapter, bus_id, "gfx_find_adapter",
            fmt::format("adapter {} is there but not listed: its driver does not answer, or the "
                        "library does not know the chip (see dmesg)",
                        bus_id)};
}

// Which devices are examined goes by the order of a directory; an adapter more than that is not a
// fault, unless none is listed.
Problem beyond_the_examined(const Discovery& discovery)
{
    const auto& unlisted = discovery.unlisted;
    return {discovery.slots.empty() ? ExitStatus::kNoAdapter : ExitStatus::kOk,
            unlisted.size() == 1 ? std::optional(unlisted.front()) : std::nullopt,
            "gfx_find_adapter",
            fmt::format("there are {} DRM devices, of which {} are examined: {} not listed; "
                        "unload the driver of another to make room",
                        discovery.drm_devices, MAX_CHIP_NUM, fmt::join(unlisted, ", "))};
}

// The product's devices that the library did not list.
std::vector<Problem> unlisted_problems(const Discovery& discovery)
{
    std::vector<Problem> problems;
    if (discovery.drm_devices <= MAX_CHIP_NUM) {
        std::ranges::transform(discovery.unlisted, std::back_inserter(problems), no_answer);
    } else if (!discovery.unlisted.empty()) {
        problems.push_back(beyond_the_examined(discovery));
    }
    return problems;
}

std::vector<Problem> discovery_problems(const Discovery& discovery)
{
    std::vector<Problem> problems;
    if (!discovery.libdrm_usable) {
        problems.push_back({ExitStatus::kNoLibdrm, std::nullopt, "gpuinfo_nimba_init",
                            "libdrm is missing or unusable, so no GPU can be found: install the "
                            "package libdrm2"});
    }
    if (discovery.denied_directory) {
        problems.push_back(denied_directory(*discovery.denied_directory));
        return problems;
    }
    std::ranges::transform(discovery.denied_nodes, std::back_inserter(problems), denied_node);
    if (discovery.libdrm_usable) {
        std::ranges::move(unlisted_problems(discovery), std::back_inserter(problems));
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
