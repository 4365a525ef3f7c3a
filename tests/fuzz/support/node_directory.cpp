// SPDX-License-Identifier: MIT
#include "fuzz/support/node_directory.hpp"

#include <fcntl.h>

#include <filesystem>

namespace nimba::fuzz {

NodeDirectory::NodeDirectory(std::initializer_list<const char*> names)
    : opened_{::open(directory_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)}
{
    for (const char* name : names) {
        std::filesystem::create_directories((directory_.path() / name).parent_path());
        nodes_[name];
    }
}

void NodeDirectory::show(const std::string& name, std::string_view text)
{
    Node& node = nodes_.at(name);
    const bool is_there = text != "absent\n";
    if (is_there && !node.is_there) {
        std::filesystem::create_symlink(node.file.path(), directory_.path() / name);
    } else if (!is_there && node.is_there) {
        std::filesystem::remove(directory_.path() / name);
    }
    node.is_there = is_there;
    node.file.set(is_there ? text : "");
}

std::string NodeDirectory::text(const std::string& name) const
{
    return nodes_.at(name).file.text();
}

}  // namespace nimba::fuzz
