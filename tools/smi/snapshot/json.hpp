// SPDX-License-Identifier: MIT
// Snapshots as JSON documents, the same in every command that shows them.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/text/document.hpp"

namespace nimba::smi {

// An adapter as an object: what "list" tells of it, whether it answered, and "summary", "memory",
// "clocks", "sensors", "usage" and "processes" with the members that "info", "mem", "clocks",
// "sensors", "usage" and "ps" have. Memory and processes that could not be read are null.
Document state_json(const AdapterState& adapter);

// The document "nimba-smi.overview.1".
Document snapshot_json(const MachineSnapshot& snapshot);

}  // namespace nimba::smi
