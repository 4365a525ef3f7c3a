// SPDX-License-Identifier: MIT
#include "tools/smi/worker/dvfs_nodes.hpp"

#include "tools/descriptor.hpp"
#include "tools/smi/worker/node_text.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include <array>
#include <cerrno>

namespace nimba::smi {
namespace {

// What kept the library from opening the directory.
int directory_error(const std::string& path)
{
    const tools::Descriptor directory{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    return directory ? ENOENT : errno;
}

int reading_error(int directory, const char* node)
{
    const tools::Descriptor file{::openat(directory, node, O_RDONLY | O_CLOEXEC)};
    std::array<char, 512> piece{};
    ssize_t length = file ? 1 : -1;
    while (length > 0) {
        length = ::read(file.get(), piece.data(), piece.size());
    }
    return length == 0 ? 0 : errno;
}

}  // namespace

NodeAccess access_to(const InfoDirectory& directory, const char* node)
{
    if (directory.fd < 0) {
        const int error = directory_error(directory.path);
        return {node, directory.path, error, error};
    }
    const bool writable = ::faccessat(directory.fd, node, W_OK, AT_EACCESS) == 0;
    const int write_error = writable ? 0 : errno;
    return {node, fmt::format("{}/{}", directory.path, node), reading_error(directory.fd, node),
            write_error};
}

bool begins_with_number(const InfoDirectory& directory, const char* node)
{
    const NodeText text = node_text(directory.fd, node);
    return text.error == 0 && begins_with_number(text.text);
}

}  // namespace nimba::smi
