// SPDX-License-Identifier: MIT
// The product's kernel-interface library, and the device block that it works in.
#pragma once

#include "core/chip_table.hpp"
#include "core/shared_library.hpp"

namespace nimba {

// The loaded kernel-interface library; empty when there is none. Written by gfx_global_init, which
// empties it for a chip that is not known, and emptied by gfx_global_exit. Its functions take
// __perf_event_fd and, most of them, pdev.
extern SharedLibrary& hwbridge_module_handle;

// The chip's kernel-interface library or its fallback, visible to what it loads in turn.
SharedLibrary load_kernel_interface(const Chip& chip);

// Allocates pdev, of the size that the loaded library asks for; a block of before is freed first.
// False, and logged, when the library tells no size, a size of 0, or memory is short.
bool allocate_device_block();

void free_device_block();

}  // namespace nimba
