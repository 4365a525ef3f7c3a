// SPDX-License-Identifier: MIT
// Archives as anybody could make them.
#pragma once

#include <string>
#include <vector>

namespace nimba::archive {

struct MadeEntry {
    std::string name;
    std::string bytes;
    // As struct stat has it; 0 is a regular file.
    unsigned type = 0;
    std::string hard_link{};
    std::string symbolic_link{};
    // What stands in the header beside it.
    std::string attribute{};
};

enum class Packing { kZstandard, kGzip, kNone };

std::string made_archive(const std::vector<MadeEntry>& entries,
                         Packing packing = Packing::kZstandard);

// The least manifest that can be read, with so many samples, and the least sample.
std::string small_manifest(int samples = 1);
std::string small_sample();

// What read_bytes, or load_capture_bytes, says of the archive; empty when it takes it.
std::string fault_in(const std::string& archive);

}  // namespace nimba::archive
