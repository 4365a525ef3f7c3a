// SPDX-License-Identifier: MIT
// The modules of the system's memory, in the output of "dmidecode -t memory".
#pragma once

#include <cstdint>
#include <string_view>

namespace nimba {

// Bits of all modules together, as far as two or four in two channels tell; else of the first.
// 0: the text tells none.
int32_t memory_width(std::string_view text);

// 4 or 5: that of the first module; 4 when it is another, or the text tells none.
int32_t ddr_generation(std::string_view text);

}  // namespace nimba
