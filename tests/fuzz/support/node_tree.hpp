// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/support/node_file.hpp"
#include "support/temp_directory.hpp"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nimba::fuzz {

// Directories of nodes as drivers show them, "0", "1", and so on, with any number of entries. The
// nodes of all are the same files in memory, so that changing a text costs nothing else.
class NodeTree final {
  public:
    // An entry `n` of the directory `name` shows its node as n/`node`, and as n/n.
    NodeTree(std::string name, std::string node) : name_{std::move(name)}, node_{std::move(node)} {}

    // The directory in which `name` has so many entries.
    const std::string& with_entries(std::size_t count);

    // The entry's node.
    NodeFile& node(std::size_t entry);

    // The entries of with_entries(count), in the order in which the system lists them.
    std::vector<std::size_t> listed(std::size_t count);

  private:
    struct Tree {
        std::string path;
        std::vector<std::size_t> listed;
    };

    const Tree& tree(std::size_t count);

    test::TempDirectory directory_;
    std::string name_;
    std::string node_;
    std::vector<std::unique_ptr<NodeFile>> nodes_;
    std::map<std::size_t, Tree> trees_;  // by number of entries
};

}  // namespace nimba::fuzz
