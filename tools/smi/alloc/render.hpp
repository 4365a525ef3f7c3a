// SPDX-License-Identifier: MIT
// The faces of "alloc".
#pragma once

#include "tools/smi/alloc/listing.hpp"

#include <string>

namespace nimba::smi {

// A table of the fields that people look for, and a line with the totals; empty when no adapter
// could be read.
std::string alloc_text(const MemorySnapshot& snapshot, const Listing& listing);

// A header line and one line for each allocation, with all fields.
std::string alloc_csv(const Listing& listing);

// The document "nimba-smi.alloc.1".
std::string alloc_json(const MemorySnapshot& snapshot, const Listing& listing);

}  // namespace nimba::smi
