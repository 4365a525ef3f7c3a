// SPDX-License-Identifier: MIT
#include "tools/smi/text/bar.hpp"

#include <algorithm>

namespace nimba::smi {

uint64_t bar_length(uint64_t part, uint64_t whole, uint64_t width)
{
    const uint64_t least = part == 0 ? 0 : 1;
    return std::clamp(part * width / whole, least, width);
}

}  // namespace nimba::smi
