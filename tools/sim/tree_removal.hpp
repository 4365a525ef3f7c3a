// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace nimba::sim {

// Removes `directory` and what is in it, whatever the permissions are. What is mounted in it is
// unmounted, or else left with its place: nothing of another file system is removed.
void remove_tree(const std::filesystem::path& directory, std::error_code& error);

}  // namespace nimba::sim
