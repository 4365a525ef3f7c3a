// SPDX-License-Identifier: MIT
// The numbers in the driver's texts, which may be anything.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace nimba::smi {

// The number that all of `text` spells in base 10; nothing for other texts.
std::optional<int64_t> decimal_in(std::string_view text);

// Likewise in base 16, with or without "0x" before it. Nothing for more digits than 64 bits have,
// even leading zeros: the library cuts long texts, so that the last digits may be missing.
std::optional<uint64_t> hexadecimal_in(std::string_view text);

}  // namespace nimba::smi
