// SPDX-License-Identifier: MIT
// The faces of "ps".
#pragma once

#include "tools/smi/ps/usage.hpp"
#include "tools/smi/text/document.hpp"

#include <string>

namespace nimba::smi {

// A table with the segments that hold anything, and a last row for all devices; empty when no
// adapter could be read.
std::string ps_text(const MemorySnapshot& snapshot, const UsageTable& table);

// A header line and one line for each device.
std::string ps_csv(const UsageTable& table);

// The document "nimba-smi.ps.1".
std::string ps_json(const MemorySnapshot& snapshot, const UsageTable& table);

// A device, and what is used of memory, as objects of documents.
Document device_json(const DeviceUsage& device);
Document usage_json(const Usage& usage);

}  // namespace nimba::smi
