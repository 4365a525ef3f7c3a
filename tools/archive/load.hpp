// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/archive/limits.hpp"

#include <string>
#include <string_view>

namespace nimba::archive {

// Reads a whole capture into memory. Nothing is written. Throws ArchiveError, whose text is one
// line without the file's name, when it is none, is damaged, or does not fit itself.
Capture load_capture(const std::string& file, const Limits& limits = {});

// The same for an archive in memory.
Capture load_capture_bytes(std::string_view bytes, const Limits& limits = {});

}  // namespace nimba::archive
