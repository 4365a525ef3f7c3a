// SPDX-License-Identifier: MIT
#include "simulation.hpp"

#include "driver/live_driver.hpp"
#include "message.hpp"
#include "served_nodes.hpp"
#include "test_bed_error.hpp"

#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace nimba::sim {
namespace {

std::optional<Simulation> simulate_live(const Machine& machine,
                                        const std::filesystem::path& directory,
                                        const std::shared_ptr<LiveDriver>& nodes,
                                        std::string& problem)
{
    auto test_bed = std::make_unique<TestBed>(machine, directory, nodes, NodeFiles::kServed);
    try {
        auto driver =
            std::make_unique<ServedDriver>(nodes, machine, test_bed->root() / kServedNodes);
        return Simulation{std::move(test_bed), std::move(driver)};
    } catch (const MountError& error) {
        problem = error.what();
        return std::nullopt;
    }
}

}  // namespace

Simulation simulate(const Machine& machine, const std::filesystem::path& directory, Drivers drivers)
{
    const auto nodes = std::make_shared<LiveDriver>(machine);
    if (drivers != Drivers::kPlain && !nodes->list("").empty()) {
        std::string problem;
        if (auto live = simulate_live(machine, directory, nodes, problem)) {
            return std::move(*live);
        }
        if (drivers == Drivers::kLive) {
            throw TestBedError{fmt::format("no live drivers ({})", problem)};
        }
        complain(fmt::format(
            "no live drivers ({}): their nodes are plain files, which never change{}", problem,
            machine.faults.empty() ? "" : "; the machine's faults do nothing"));
    }
    return {std::make_unique<TestBed>(machine, directory, nodes, NodeFiles::kPlain), nullptr};
}

}  // namespace nimba::sim
