// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace nimba::archive {

// What an archive may have at most; a capture keeps within them, too.
struct Limits {
    uint64_t entry_bytes = 256ULL << 20U;
    uint64_t record_bytes = 64ULL << 20U;    // of an entry that is JSON
    uint64_t document_bytes = 16ULL << 20U;  // of one that a command said
    uint64_t total_bytes = 1ULL << 30U;
    uint64_t ratio = 1000;               // of all bytes, headers too, to those of the file,
    uint64_t free_bytes = 16ULL << 20U;  // of which so many do not count
    uint64_t entries = 1'000'000;
    uint64_t name_bytes = 1024;
    uint64_t all_names_bytes = 128ULL << 20U;
    uint64_t samples = 100'000;
    uint64_t record_values = 3'000'000;    // of an entry that is JSON
    uint64_t document_values = 1'000'000;  // of all that commands said once, and of an overview
    uint64_t nodes = 4'000'000;            // that samples tell, and names in their directories
    uint64_t devices = 256;                // DRM devices, or adapters: as many as libdrm takes
    uint64_t functions = 64;               // of a kernel-interface library
};

}  // namespace nimba::archive
