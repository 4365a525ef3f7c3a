// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace nimba::smi {

// What keeps the user from a node of the driver's info directory: error numbers, 0 for nothing.
struct NodeAccess {
    std::string node;
    std::string path;
    int read_error = 0;   // of reading all of it
    int write_error = 0;  // of asking whether it may be written

    bool operator==(const NodeAccess&) const = default;
};

// What is known of a node; one that nobody asked about is not there.
NodeAccess access_of(const std::vector<NodeAccess>& nodes, const char* node);

}  // namespace nimba::smi
