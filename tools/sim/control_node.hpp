// SPDX-License-Identifier: MIT
// The nodes through which commands of a run have their way with its simulated machine.
#pragma once

#include <string>
#include <string_view>

namespace nimba::sim {

// The node's text. Throws TestBedError where there is no machine with live drivers.
std::string read_control_node(std::string_view name);

// Returns 0, or the error with which the node rejects the text. Throws as above.
int write_control_node(std::string_view name, std::string_view text);

}  // namespace nimba::sim
