// SPDX-License-Identifier: MIT
#include "driver/snapshot.hpp"

#include <fmt/format.h>

#include <utility>

namespace nimba::sim {
namespace {

// The tree is a few levels deep.
void add_below(NodeSource& source, const std::string& directory, std::vector<SnapshotNode>& nodes)
{
    for (const std::string& name : source.list(directory)) {
        const std::string path = directory.empty() ? name : fmt::format("{}/{}", directory, name);
        const auto attributes = source.look_up(path);
        if (!attributes) {
            continue;
        }
        if (attributes->directory) {
            nodes.push_back({path, *attributes, ""});
            add_below(source, path, nodes);
        } else if (auto text = source.read(path)) {
            nodes.push_back({path, *attributes, std::move(*text)});
        }
    }
}

}  // namespace

std::vector<SnapshotNode> take_snapshot(NodeSource& source)
{
    std::vector<SnapshotNode> nodes;
    add_below(source, "", nodes);
    return nodes;
}

}  // namespace nimba::sim
