// SPDX-License-Identifier: MIT
#include "simulation.hpp"

#include "message.hpp"
#include "served_nodes.hpp"
#include "test_bed_error.hpp"

#include <fmt/core.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace nimba::sim {
namespace {

std::chrono::nanoseconds monotonic_time()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

std::optional<Simulation> simulate_live(const Machine& machine,
                                        const std::filesystem::path& directory,
                                        const std::shared_ptr<MachineDriver>& nodes,
                                        std::string& problem)
{
    auto test_bed = std::make_unique<TestBed>(machine, directory, nodes, nullptr);
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

Simulation simulate(const Machine& machine, const MakeDriver& make_driver,
                    const std::filesystem::path& directory, Drivers drivers)
{
    const auto nodes = make_driver(monotonic_time);
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
    const auto first_moment = make_driver([] { return std::chrono::nanoseconds{0}; });
    return {std::make_unique<TestBed>(machine, directory, nodes, first_moment.get()), nullptr};
}

}  // namespace nimba::sim
