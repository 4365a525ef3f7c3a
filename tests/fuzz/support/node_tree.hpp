// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/support/node_file.hpp"
#include "support/temp_directory.hpp"

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nimba::fuzz {

// Directories of nodes as drivers show them, with any number of entries of any names. The nodes of
// all are the same files in memory, so that changing a text costs nothing else; names cost what
// differs from those before.
class NodeTree final {
  public:
    struct Tree {
        std::string path;
        std::vector<std::string> names;
        std::vector<std::size_t>
            listed;  // the entries, in the order in which the system lists them
    };

    // An entry of the directory `name` shows its node as `node`, and under the entry's own name.
    NodeTree(std::string name, std::string node) : name_{std::move(name)}, node_{std::move(node)} {}

    // The directory in which `name` has entries of these names, all of them different.
    const Tree& with_entries(const std::vector<std::string>& names);

    // The entry's node.
    NodeFile& node(std::size_t entry);

  private:
    void rename(const std::filesystem::path& entries, const std::vector<std::string>& before,
                const std::vector<std::string>& names);

    test::TempDirectory directory_;
    std::string name_;
    std::string node_;
    std::vector<std::unique_ptr<NodeFile>> nodes_;
    std::map<std::size_t, Tree> trees_;  // by number of entries
};

}  // namespace nimba::fuzz
