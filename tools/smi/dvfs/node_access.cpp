// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/node_access.hpp"

#include <algorithm>
#include <cerrno>

namespace nimba::smi {

NodeAccess access_of(const std::vector<NodeAccess>& nodes, const char* node)
{
    const auto found = std::ranges::find(nodes, node, &NodeAccess::node);
    return found == nodes.end() ? NodeAccess{node, node, ENOENT, ENOENT} : *found;
}

}  // namespace nimba::smi
