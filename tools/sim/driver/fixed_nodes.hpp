// SPDX-License-Identifier: MIT
#pragma once

#include "driver/node_source.hpp"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

// A tree of nodes that neither come nor go. Paths are those of NodeSource. Directories list their
// nodes in the order in which they were added.
class FixedNodes {
  public:
    // Adds a file that is not there yet, or a directory unless it is there, and the directories
    // that it is in.
    void add_file(const std::string& path, std::string text, mode_t mode);
    void add_directory(const std::string& path);

    // Changes the permissions of a node that was added.
    void set_mode(const std::string& path, mode_t mode) { nodes_.at(path).attributes.mode = mode; }

    // As in NodeSource. Files that their owner cannot write reject every write.
    std::optional<NodeAttributes> look_up(const std::string& path) const;
    std::vector<std::string> list(const std::string& directory) const;
    std::optional<std::string> read(const std::string& file) const;
    int write(const std::string& file, std::string_view text);

  private:
    struct Node {
        NodeAttributes attributes;
        std::string text;                  // of a file
        std::vector<std::string> entries;  // of a directory
        bool writable = false;
    };

    // Adds the node's name to its directory.
    void enter(const std::string& path);
    const Node* find(const std::string& path) const;

    std::map<std::string, Node> nodes_{{"", {{true, 0755}, "", {}, false}}};
};

}  // namespace nimba::sim
