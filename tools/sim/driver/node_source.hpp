// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

struct NodeAttributes {
    bool directory = false;
    mode_t mode = 0;  // permission bits only

    bool operator==(const NodeAttributes&) const = default;
};

// A tree of nodes as kernel drivers show them. Paths have no leading slash
// ("dri/0/jw/allocations/7/info", "info/0/power_mode"); "" is the root. Every member may be called
// from several threads at once.
class NodeSource {
  public:
    NodeSource() = default;
    NodeSource(const NodeSource&) = delete;
    NodeSource& operator=(const NodeSource&) = delete;
    virtual ~NodeSource() = default;

    // Nothing: there is no such node. A node has the same attributes for as long as it is there.
    virtual std::optional<NodeAttributes> look_up(const std::string& path) = 0;

    // The names in a directory, in listing order; empty when it is none (any more).
    virtual std::vector<std::string> list(const std::string& directory) = 0;

    // The text that the node shows now. Nothing: it is gone.
    virtual std::optional<std::string> read(const std::string& file) = 0;

    // One command for the node. Returns 0, or the errno with which the driver rejects it.
    virtual int write(const std::string& file, std::string_view text) = 0;
};

}  // namespace nimba::sim
