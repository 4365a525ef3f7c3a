// SPDX-License-Identifier: MIT
// The adapter that a worker serves.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/session.hpp"

#include <optional>

namespace nimba::smi {

// The adapter in the worker's slot, with what the record lacks and its PCI directory tells. Nothing
// when the slot is empty.
std::optional<Adapter> own_adapter(Session& session);

// Whether the library could have seen that the driver is VA: it finds the info node by the number
// of the primary node.
bool has_primary_node(const Adapter& adapter);

// The record with which the library makes `adapter` current. What a GPU of another vendor took over
// in its slot, and the card of an adapter without a primary node, are put right.
find_adapter record_to_enter(const find_adapter& found, const Adapter& adapter);

}  // namespace nimba::smi
