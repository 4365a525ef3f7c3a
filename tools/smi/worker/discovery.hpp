// SPDX-License-Identifier: MIT
// Reading discovery's records: who is in which slot. Pure functions on the two records.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// A record for discovery to fill, which asks for both of the product's vendors. A field that
// discovery cannot fill shows: cards and directories are -1.
find_adapter unfilled_adapters();

// What one discovery filled.
struct DiscoveryRecords {
    find_adapter adapters{};
    find_adapter_ext1 identity{};
};

// The slots that hold an adapter: 0 to MAX_CHIP_NUM, whatever the record says.
int slot_count(const DiscoveryRecords& records);

std::vector<SlotIdentity> slot_identities(const DiscoveryRecords& records);

// The GPU of another vendor, when there is one.
std::optional<ForeignGpu> foreign_gpu(const DiscoveryRecords& records);

// Whether `slot` holds an adapter whose name, device, card and location were overwritten by the GPU
// of another vendor; its handles are still its own.
bool is_overwritten(const DiscoveryRecords& records, int slot);

// The adapter in `slot`, below slot_count, as far as the records tell: an overwritten slot's card
// and device identifier are absent, and so is the card of an adapter without a primary node. The
// driver kind is VA or unknown.
Adapter adapter_in_slot(const DiscoveryRecords& records, int slot);

// The identifier that belongs to a PCI bus id "dddd:bb:dd.f"; zero for other texts.
Luid luid_of(const std::string& bus_id);

}  // namespace nimba::smi
