// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace nimba::sim {

struct AdapterState;

// A node: what it shows of an adapter, and what a command does that is written to it. `command` is
// null where nothing can be written; it returns whether it understood, and changes nothing if not.
struct StateNode {
    std::string_view name;
    std::string (*text)(const AdapterState& state);
    bool (*command)(AdapterState& state, std::string_view command);
};

// The nodes of the driver's info directory, and those of a QV chip's.
std::span<const StateNode> info_nodes();
std::span<const StateNode> qv_info_nodes();

std::span<const StateNode> hwmon_nodes();

}  // namespace nimba::sim
