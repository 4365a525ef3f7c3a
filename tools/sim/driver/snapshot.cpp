// SPDX-License-Identifier: MIT
#include "driver/snapshot.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace nimba::sim {
namespace {

// The tree is a few levels deep.
void add_below(NodeSource& source, const std::string& directory, SnapshotOrder order,
               std::vector<SnapshotNode>& nodes)
{
    auto names = source.list(directory);
    if (order == SnapshotOrder::kReverseListing) {
        std::ranges::reverse(names);
    }
    for (const std::string& name : names) {
        const std::string path = directory.empty() ? name : fmt::format("{}/{}", directory, name);
        const auto attributes = source.look_up(path);
        if (!attributes) {
            continue;
        }
        if (attributes->directory) {
            nodes.push_back({path, *attributes, ""});
            add_below(source, path, order, nodes);
        } else if (auto text = source.read(path)) {
            nodes.push_back({path, *attributes, std::move(*text)});
        }
    }
}

}  // namespace

std::vector<SnapshotNode> take_snapshot(NodeSource& source, SnapshotOrder order)
{
    std::vector<SnapshotNode> nodes;
    add_below(source, "", order, nodes);
    return nodes;
}

}  // namespace nimba::sim
