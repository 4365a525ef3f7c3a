// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace nimba::sim {

struct FusermountResult {
    bool done = false;
    std::string message;  // why not, in one line
};

// Runs fusermount3, the program that mounts FUSE file systems for ordinary users, and waits for it.
// It gets the socket `connection_socket`, over which it sends the connection of a new mount; a
// negative one is none.
FusermountResult run_fusermount(const std::vector<std::string>& arguments, int connection_socket);

}  // namespace nimba::sim
