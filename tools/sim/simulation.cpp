// SPDX-License-Identifier: MIT
#include "simulation.hpp"

#include "driver/live_driver.hpp"
#include "message.hpp"
#include "test_bed_error.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace nimba::sim {
namespace {

bool changes(const Machine& machine)
{
    return std::ranges::any_of(machine.adapters, [](const Adapter& adapter) {
        const VideoMemory& memory = adapter.video_memory;
        return !memory.leaks.empty() || memory.change.appear != 0 || memory.change.vanish != 0;
    });
}

// What of the machine does nothing without live drivers, for a message.
std::string losses(const Machine& machine)
{
    const bool has_faults = !machine.faults.empty();
    if (has_faults && changes(machine)) {
        return "; the machine's faults and changes do nothing";
    }
    if (has_faults) {
        return "; the machine's faults do nothing";
    }
    return changes(machine) ? "; the machine's changes do nothing" : "";
}

std::optional<Simulation> simulate_live(const Machine& machine,
                                        const std::filesystem::path& directory,
                                        std::unique_ptr<NodeSource> nodes, std::string& problem)
{
    auto test_bed = std::make_unique<TestBed>(machine, directory, DebugFiles::kServed);
    try {
        auto driver = std::make_unique<ServedDriver>(std::move(nodes), machine,
                                                     test_bed->root() / "sys/kernel/debug");
        return Simulation{std::move(test_bed), std::move(driver)};
    } catch (const MountError& error) {
        problem = error.what();
        return std::nullopt;
    }
}

}  // namespace

Simulation simulate(const Machine& machine, const std::filesystem::path& directory, Drivers drivers)
{
    auto nodes = std::make_unique<LiveDriver>(machine);
    if (drivers != Drivers::kPlain && !nodes->list("").empty()) {
        std::string problem;
        if (auto live = simulate_live(machine, directory, std::move(nodes), problem)) {
            return std::move(*live);
        }
        if (drivers == Drivers::kLive) {
            throw TestBedError{fmt::format("no live drivers ({})", problem)};
        }
        complain(fmt::format("no live drivers ({}): the nodes of debugfs are plain files{}",
                             problem, losses(machine)));
    }
    return {std::make_unique<TestBed>(machine, directory, DebugFiles::kPlain), nullptr};
}

}  // namespace nimba::sim
