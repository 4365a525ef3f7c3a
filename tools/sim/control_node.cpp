// SPDX-License-Identifier: MIT
#include "control_node.hpp"

#include "served_nodes.hpp"
#include "test_bed_error.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fmt/core.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

namespace nimba::sim {
namespace {

constexpr std::size_t kPart = 65536;

// The machine's node, as a file of this one.
std::filesystem::path place_of(std::string_view name)
{
    const char* const root = getenv("UMOCKDEV_DIR");
    if (root == nullptr || *root == '\0') {
        throw TestBedError{
            "no simulated machine here: this is for commands that `nimba-sim run` runs"};
    }
    return std::filesystem::path{root} / kServedNodes / name;
}

tools::Descriptor open_node(std::string_view name, int flags)
{
    tools::Descriptor node{open(place_of(name).c_str(), flags | O_CLOEXEC)};
    if (!node) {
        throw TestBedError{
            fmt::format("the simulated machine has no live drivers: {}", std::strerror(errno))};
    }
    return node;
}

}  // namespace

std::string read_control_node(std::string_view name)
{
    const tools::Descriptor node = open_node(name, O_RDONLY);
    std::string text;
    std::vector<char> part(kPart);
    ssize_t length = 0;
    while ((length = read(node.get(), part.data(), part.size())) > 0) {
        text.append(part.data(), static_cast<std::size_t>(length));
    }
    return text;
}

int write_control_node(std::string_view name, std::string_view text)
{
    const tools::Descriptor node = open_node(name, O_WRONLY);
    return write(node.get(), text.data(), text.size()) < 0 ? errno : 0;
}

}  // namespace nimba::sim
