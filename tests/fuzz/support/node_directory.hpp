// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/support/node_file.hpp"
#include "support/temp_directory.hpp"

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>

namespace nimba::fuzz {

// A directory of nodes in memory.
class NodeDirectory final {
  public:
    // The names may be paths in the directory.
    explicit NodeDirectory(std::initializer_list<const char*> names);

    // Makes the node show the text. The text "absent\n" takes the node away.
    void show(const std::string& name, std::string_view text);

    // Whether the node is there.
    [[nodiscard]] bool has(const std::string& name) const { return nodes_.at(name).is_there; }

    // What the node shows; empty for one that is not there.
    [[nodiscard]] std::string text(const std::string& name) const;

    [[nodiscard]] int descriptor() const { return opened_.get(); }
    [[nodiscard]] std::string path() const { return directory_.path().string(); }

  private:
    struct Node {
        NodeFile file;
        bool is_there = false;
    };

    test::TempDirectory directory_;
    test::Descriptor opened_;
    std::map<std::string, Node> nodes_;
};

}  // namespace nimba::fuzz
