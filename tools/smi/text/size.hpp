// SPDX-License-Identifier: MIT
// Sizes for people: IEC units.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// The units that sizes can be shown in.
enum class SizeUnit : uint8_t { kAuto, kB, kKiB, kMiB, kGiB, kKB, kMB, kGB };

// "auto", "B", "KiB", "MiB", "GiB", "kB", "MB" or "GB".
std::optional<SizeUnit> parse_size_unit(std::string_view text);

// "0 B", "1023 B", "4 KiB", "1.5 MiB", "20.0 GiB": exact, or rounded to one decimal place. In a
// chosen unit, what is less than it can show is "<0.1 GiB". kAuto: in the largest IEC unit of which
// there is one at least.
std::string size_text(uint64_t bytes, SizeUnit unit);

// The same in the unit that was chosen for this run.
std::string size_text(uint64_t bytes);

// Chooses the unit for all tables of this run, kAuto at its beginning. It is the process's own
// since every command shows sizes; the command line's parser chooses it once, before a command
// runs, and nothing resets it.
void choose_size_unit(SizeUnit unit);
SizeUnit chosen_size_unit();

// The bytes that a text such as "4096", "4KiB", "1.5 MiB" or "2g" tells; the unit is B, or K, M, G
// or T with or without "iB", in letters of any case. Nothing for other texts, and for sizes of more
// than 64 bits.
std::optional<uint64_t> parse_size(std::string_view text);

}  // namespace nimba::smi
