// SPDX-License-Identifier: MIT
// The adapter that a worker serves.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/session.hpp"

#include <optional>
#include <span>
#include <string_view>

namespace nimba::smi {

// The slot of the adapter that was in slot `before` once: it may have left and come back behind
// others. Of several with this bus id it is the one that stayed. Nothing when there is none.
std::optional<int> slot_now(int before, std::string_view bus_id,
                            std::span<const SlotIdentity> slots);

// The worker's adapter, with what the record lacks and its PCI directory tells. Nothing when it is
// gone.
std::optional<Adapter> own_adapter(Session& session);

// Whether the library could have seen that the driver is VA: it finds the info node by the number
// of the primary node.
bool has_primary_node(const Adapter& adapter);

// The record with which the library makes `adapter` current. What a GPU of another vendor took over
// in its slot, and the card of an adapter without a primary node, are put right.
find_adapter record_to_enter(const find_adapter& found, const Adapter& adapter);

}  // namespace nimba::smi
