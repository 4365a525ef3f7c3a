// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace nimba::bench {

// Runs nimba-bench-memory, which lies beside this program. Returns what it wrote, lines
// "key=value". Throws std::runtime_error when it failed.
std::string run_memory_program(const std::string& kind, const std::filesystem::path& directory);

}  // namespace nimba::bench
