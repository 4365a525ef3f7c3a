// SPDX-License-Identifier: MIT
#include "driver/snapshot.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace nimba::sim {
namespace {

// The tree is a few levels deep.
void add_at(NodeSource& source, const std::string& path, SnapshotOrder order,
            std::vector<SnapshotNode>& nodes)
{
    const auto attributes = source.look_up(path);
    if (!attributes) {
        return;
    }
    if (!attributes->directory) {
        if (auto text = source.read(path)) {
            nodes.push_back({path, *attributes, std::move(*text)});
        }
        return;
    }
    nodes.push_back({path, *attributes, ""});
    auto names = source.list(path);
    if (order == SnapshotOrder::kReverseListing) {
        std::ranges::reverse(names);
    }
    for (const std::string& name : names) {
        add_at(source, fmt::format("{}/{}", path, name), order, nodes);
    }
}

}  // namespace

std::vector<SnapshotNode> take_snapshot(NodeSource& source, const std::string& path,
                                        SnapshotOrder order)
{
    std::vector<SnapshotNode> nodes;
    add_at(source, path, order, nodes);
    return nodes;
}

}  // namespace nimba::sim
