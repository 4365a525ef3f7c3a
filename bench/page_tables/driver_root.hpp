// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace nimba::bench {

// From now on, what this program, its libraries included, opens with open, openat or opendir below
// /sys/kernel/debug/dri/0/qv, where the library looks for page tables, is opened below `tree`.
void replace_driver_root(const std::filesystem::path& tree);

}  // namespace nimba::bench
