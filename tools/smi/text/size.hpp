// SPDX-License-Identifier: MIT
// Sizes for people: IEC units.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// "0 B", "1023 B", "4 KiB", "1.5 MiB", "20.0 GiB": exact, or rounded to one decimal place.
std::string size_text(uint64_t bytes);

// The bytes that a text such as "4096", "4KiB", "1.5 MiB" or "2g" tells; the unit is B, or K, M, G
// or T with or without "iB", in letters of any case. Nothing for other texts, and for sizes of more
// than 64 bits.
std::optional<uint64_t> parse_size(std::string_view text);

}  // namespace nimba::smi
