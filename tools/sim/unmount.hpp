// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace nimba::sim {

// Takes what is mounted at `directory` out of the tree, even if it is in use or dead. Does nothing
// where this user may not.
void unmount(const std::filesystem::path& directory);

// Does so with everything that is mounted in `directory` or below.
void unmount_below(const std::filesystem::path& directory);

}  // namespace nimba::sim
