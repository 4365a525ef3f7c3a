// SPDX-License-Identifier: MIT
#include "fuzz/support/node_tree.hpp"

#include <algorithm>

namespace nimba::fuzz {
namespace {

std::vector<std::size_t> listing(const std::filesystem::path& entries,
                                 const std::vector<std::string>& names)
{
    std::vector<std::size_t> listed;
    for (const auto& found : std::filesystem::directory_iterator{entries}) {
        const auto name = std::ranges::find(names, found.path().filename().string());
        listed.push_back(static_cast<std::size_t>(name - names.begin()));
    }
    return listed;
}

}  // namespace

NodeFile& NodeTree::node(std::size_t entry)
{
    while (nodes_.size() <= entry) {
        nodes_.push_back(std::make_unique<NodeFile>());
    }
    return *nodes_[entry];
}

const NodeTree::Tree& NodeTree::with_entries(const std::vector<std::string>& names)
{
    Tree& tree = trees_[names.size()];
    const bool is_new = tree.path.empty();
    if (is_new) {
        tree.path = directory_.path() / std::to_string(names.size());
        std::filesystem::create_directories(std::filesystem::path{tree.path} / name_);
    }
    if (is_new || tree.names != names) {
        const std::filesystem::path entries = std::filesystem::path{tree.path} / name_;
        rename(entries, tree.names, names);
        tree.names = names;
        tree.listed = listing(entries, names);
    }
    return tree;
}

// `before` is as long as `names`, or empty.
void NodeTree::rename(const std::filesystem::path& entries, const std::vector<std::string>& before,
                      const std::vector<std::string>& names)
{
    for (std::size_t entry = 0; entry < before.size(); ++entry) {
        if (before[entry] != names[entry]) {
            std::filesystem::remove_all(entries / before[entry]);
        }
    }
    for (std::size_t entry = 0; entry < names.size(); ++entry) {
        if (!before.empty() && before[entry] == names[entry]) {
            continue;
        }
        const std::filesystem::path directory = entries / names[entry];
        std::filesystem::create_directory(directory);
        std::filesystem::create_symlink(node(entry).path(), directory / node_);
        if (names[entry] != node_) {
            std::filesystem::create_symlink(node(entry).path(), directory / names[entry]);
        }
    }
}

}  // namespace nimba::fuzz
