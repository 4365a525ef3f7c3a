// SPDX-License-Identifier: MIT
#pragma once

#include "driver/adapter_model.hpp"
#include "machine.hpp"

#include <string_view>
#include <vector>

namespace nimba::sim {

// Whether the node of the place's directory is the one at the place, or below it.
bool is_at_or_below(std::string_view node, const NodePlace& place);

// The nodes of a directory that the adapter's model answers for: those that the machine file
// neither takes away nor has a text in place of.
std::vector<ModelNode> shown_model_nodes(const Adapter& adapter, NodeDirectory directory);

}  // namespace nimba::sim
