// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace nimba::smi {

// How long a bar of `width` is for this part of a whole that is not 0: nothing only if the part is,
// and all of it only if the part is the whole, or more.
uint64_t bar_length(uint64_t part, uint64_t whole, uint64_t width);

}  // namespace nimba::smi
