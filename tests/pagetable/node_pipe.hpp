// SPDX-License-Identifier: MIT
// A driver's node that is looked at while it is read.
#pragma once

#include "support/descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace nimba::test {

// Runs `reader`, which reads the node at `path`: a new one that gives `text` as soon as it is open.
// Returns for each descriptor that was open on it then whether it closes on exec.
template <typename Reader>
std::vector<bool> closing_on_exec_in(const std::string& path, std::string_view text,
                                     Reader&& reader)
{
    using namespace std::chrono_literals;
    if (::mkfifo(path.c_str(), 0600) != 0) {
        throw std::system_error{errno, std::generic_category(), "mkfifo"};
    }
    std::jthread reading;  // waited for behind the end of the node
    const Descriptor node{::open(path.c_str(), O_RDWR | O_CLOEXEC)};
    reading = std::jthread{reader};
    std::vector<bool> closing;
    const auto bound = std::chrono::steady_clock::now() + 20s;
    while (closing.empty() && std::chrono::steady_clock::now() < bound) {
        for (const int fd : descriptors_on(path)) {
            if (fd != node.get()) {
                closing.push_back(closes_on_exec(fd));
            }
        }
        std::this_thread::yield();
    }
    if (::write(node.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::system_error{errno, std::generic_category(), "write"};
    }
    return closing;
}

}  // namespace nimba::test
