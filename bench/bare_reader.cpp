// SPDX-License-Identifier: MIT
#include "bench/bare_reader.hpp"

#include "bench/directory.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace nimba::bench {
namespace {

std::int64_t read_node(int directory, const char* entry)
{
    std::array<char, sizeof(dirent::d_name) + sizeof "/info"> path{};
    std::strcpy(::stpcpy(path.data(), entry), "/info");
    const tools::Descriptor node{::openat(directory, path.data(), O_RDONLY | O_CLOEXEC)};
    std::array<char, 4096> buffer;
    std::int64_t bytes = 0;
    ssize_t got = 0;
    while ((got = ::read(node.get(), buffer.data(), buffer.size())) > 0) {
        bytes += got;
    }
    if (got < 0) {
        throw std::system_error{errno, std::generic_category(), path.data()};
    }
    return bytes;
}

}  // namespace

BareCount read_bare(const std::string& debug_directory)
{
    const Directory allocations = open_directory(debug_directory + "/allocations");
    BareCount count;
    while (const dirent* const entry = next_entry(allocations)) {
        count.bytes += read_node(::dirfd(allocations.get()), entry->d_name);
        ++count.nodes;
    }
    return count;
}

}  // namespace nimba::bench
