// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <filesystem>
#include <stdexcept>

namespace nimba::sim {

// This user cannot mount a FUSE file system here. The message is one line that says why.
class MountError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A FUSE file system that is mounted at a directory. Whoever reads the connection answers for it;
// once that is closed, every call in the file system fails.
class FuseMount {
  public:
    // Mounts by itself where that is permitted, as root mostly, and then for every user; else with
    // fusermount3, and then for this user alone. Either way the kernel checks permissions.
    // Throws MountError.
    explicit FuseMount(std::filesystem::path directory);

    // Unmounts, even if the file system is in use. Close the connection before.
    ~FuseMount();

    FuseMount(const FuseMount&) = delete;
    FuseMount& operator=(const FuseMount&) = delete;

    // Gives the connection away.
    tools::Descriptor take_connection() { return std::move(connection_); }

  private:
    std::filesystem::path directory_;
    tools::Descriptor connection_;
};

}  // namespace nimba::sim
