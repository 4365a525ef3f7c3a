// SPDX-License-Identifier: MIT
#include "tools/smi/process/discovery_problems.hpp"

#include "nimba_mgmt_interface.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <string>

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

}  // namespace

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

Problem gone_problem(const Subject& subject)
{
    return {ExitStatus::kNoAdapter, subject.bus_id, "gfx_find_adapter",
            fmt::format("{}: gone since discovery; run the command again", subject.name)};
}

}  // namespace nimba::smi
