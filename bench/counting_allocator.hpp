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

}  // namespace nimba::bench
