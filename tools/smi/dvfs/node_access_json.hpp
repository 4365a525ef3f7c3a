// SPDX-License-Identifier: MIT
// The JSON form of a node's access: for the files that define those of readings.
#pragma once

#include "tools/smi/dvfs/node_access.hpp"

#include <nlohmann/json.hpp>

namespace nimba::smi {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(NodeAccess, node, path, read_error, write_error)

}  // namespace nimba::smi
