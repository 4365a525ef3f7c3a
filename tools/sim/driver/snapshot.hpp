// SPDX-License-Identifier: MIT
#pragma once

#include "driver/node_source.hpp"

#include <string>
#include <vector>

namespace nimba::sim {

struct SnapshotNode {
    std::string path;  // as in NodeSource
    NodeAttributes attributes;
    std::string text;  // of a file

    bool operator==(const SnapshotNode&) const = default;
};

// In which order the nodes of a directory come.
enum class SnapshotOrder { kListing, kReverseListing };

// What is at the path now, and all nodes below it, each directory before what is in it. A node that
// vanishes meanwhile is left out.
std::vector<SnapshotNode> take_snapshot(NodeSource& source, const std::string& path,
                                        SnapshotOrder order = SnapshotOrder::kListing);

}  // namespace nimba::sim
