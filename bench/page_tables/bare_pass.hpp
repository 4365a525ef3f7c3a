// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

namespace nimba::bench {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

struct BareDump {
    int lines = 0;
    std::unique_ptr<std::byte, FreeBlock> records;
};

// Reads the dump at `path` to its end, finds the ends of its lines and writes `record_bytes` bytes
// into fresh memory: what no parser of it can do without. Throws std::system_error and
// std::bad_alloc.
BareDump read_bare_dump(const std::string& path, std::size_t record_bytes);

}  // namespace nimba::bench
