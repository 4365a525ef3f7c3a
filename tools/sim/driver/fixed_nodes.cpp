// SPDX-License-Identifier: MIT
#include "driver/fixed_nodes.hpp"

#include <cerrno>
#include <utility>

namespace nimba::sim {

void FixedNodes::add_file(const std::string& path, std::string text, mode_t mode)
{
    enter(path);
    nodes_.insert_or_assign(path, Node{{false, mode}, std::move(text), {}, (mode & 0200) != 0});
}

void FixedNodes::add_directory(const std::string& path)
{
    if (!nodes_.contains(path)) {
        enter(path);
        nodes_.emplace(path, Node{{true, 0755}, "", {}, false});
    }
}

void FixedNodes::enter(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash);
    add_directory(directory);
    nodes_.at(directory).entries.push_back(slash == std::string::npos ? path
                                                                      : path.substr(slash + 1));
}

const FixedNodes::Node* FixedNodes::find(const std::string& path) const
{
    const auto node = nodes_.find(path);
    return node == nodes_.end() ? nullptr : &node->second;
}

std::optional<NodeAttributes> FixedNodes::look_up(const std::string& path) const
{
    const Node* node = find(path);
    return node == nullptr ? std::nullopt : std::optional{node->attributes};
}

std::vector<std::string> FixedNodes::list(const std::string& directory) const
{
    const Node* node = find(directory);
    return node == nullptr ? std::vector<std::string>{} : node->entries;
}

std::optional<std::string> FixedNodes::read(const std::string& file) const
{
    const Node* node = find(file);
    return node == nullptr || node->attributes.directory ? std::nullopt : std::optional{node->text};
}

int FixedNodes::write(const std::string& file, std::string_view text)
{
    const auto node = nodes_.find(file);
    if (node == nodes_.end()) {
        return ENOENT;
    }
    if (node->second.attributes.directory) {
        return EISDIR;
    }
    if (!node->second.writable) {
        return EACCES;
    }
    node->second.text = text;
    return 0;
}

}  // namespace nimba::sim
