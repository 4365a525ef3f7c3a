// SPDX-License-Identifier: MIT
// Reads the entries of an archive into memory. Nothing is ever unpacked into files.
#pragma once

#include "tools/archive/entry_name.hpp"
#include "tools/archive/limits.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace nimba::archive {

// Takes one entry; what it throws passes through.
using TakeEntry = std::function<void(EntryName name, std::string bytes)>;

// Hands over the archive's entries in their order, each of a name that the layout allows and of
// that name only once. Throws ArchiveError, also when the archive ends early or has more than the
// limits allow.
void read_file(const std::string& file, const Limits& limits, const TakeEntry& take);

// The same for an archive in memory.
void read_bytes(std::string_view bytes, const Limits& limits, const TakeEntry& take);

}  // namespace nimba::archive
