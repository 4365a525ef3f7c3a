// SPDX-License-Identifier: MIT
#include "fuzz/support/node_tree.hpp"

#include <dirent.h>

#include <filesystem>
#include <string_view>

namespace nimba::fuzz {

NodeFile& NodeTree::node(std::size_t entry)
{
    while (nodes_.size() <= entry) {
        nodes_.push_back(std::make_unique<NodeFile>());
    }
    return *nodes_[entry];
}

const std::string& NodeTree::with_entries(std::size_t count)
{
    return tree(count).path;
}

std::vector<std::size_t> NodeTree::listed(std::size_t count)
{
    return tree(count).listed;
}

const NodeTree::Tree& NodeTree::tree(std::size_t count)
{
    Tree& tree = trees_[count];
    if (!tree.path.empty()) {
        return tree;
    }
    tree.path = directory_.path() / std::to_string(count);
    const std::filesystem::path entries = std::filesystem::path{tree.path} / name_;
    std::filesystem::create_directories(entries);
    for (std::size_t entry = 0; entry < count; ++entry) {
        const std::string number = std::to_string(entry);
        std::filesystem::create_directory(entries / number);
        std::filesystem::create_symlink(node(entry).path(), entries / number / node_);
        std::filesystem::create_symlink(node(entry).path(), entries / number / number);
    }
    for (const auto& found : std::filesystem::directory_iterator{entries}) {
        tree.listed.push_back(std::stoul(found.path().filename().string()));
    }
    return tree;
}

}  // namespace nimba::fuzz
