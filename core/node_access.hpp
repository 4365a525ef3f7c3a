// SPDX-License-Identifier: MIT
// Reading, scanning and writing of driver nodes. All are silent: a node that cannot be opened
// gives 0, and the caller treats the value as absent. A name is relative to `directory`; with an
// absolute name the directory is not used, and callers pass 0.
#pragma once

#include <cstdint>

namespace nimba {

// Reads up to `size` bytes, whatever signals come in between; does not NUL-terminate them. Returns
// the number read.
int read_node_at(int directory, const char* name, char* buffer, uint64_t size);

// Scans the node's first 4096 bytes once by scanf's rules. Returns the number of conversions, or -1
// for an empty node.
[[gnu::format(scanf, 3, 4)]] int scanf_node_at(int directory, const char* name, const char* format,
                                               ...);

// Writes one formatted text to an existing node. Returns the number of characters of the text: a
// value that the driver rejects counts as written.
[[gnu::format(printf, 3, 4)]] int printf_node_at(int directory, const char* name,
                                                 const char* format, ...);

}  // namespace nimba
