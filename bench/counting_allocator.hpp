// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace nimba::bench {

// The bytes that all callers of the allocator in this process hold, libraries and operator new
// included, as the allocator rounds them.
std::size_t live_bytes();

// The greatest live_bytes since the last restart_peak, or since the start.
std::size_t peak_bytes();
void restart_peak();

// How many blocks of `size` bytes and more were given since count_blocks_from(size).
void count_blocks_from(std::size_t size);
std::size_t counted_blocks();

}  // namespace nimba::bench
