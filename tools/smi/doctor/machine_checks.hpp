// SPDX-License-Identifier: MIT
// The checks of the machine, from what workers found out. Pure functions.
#pragma once

#include "tools/smi/doctor/check.hpp"
#include "tools/smi/doctor/facts.hpp"

#include <string>

namespace nimba::smi {

// Where to look for what the driver has to say about an adapter.
std::string log_of(const std::string& bus_id);

Check libdrm_check(const LibdrmFacts& facts);

// The product's devices on the PCI bus; their DRM nodes; whether this user may open those. Each
// needs the one before it.
Check pci_devices_check(const DeviceFacts& facts);
Check drm_devices_check(const DeviceFacts& facts, const Check& pci_devices);
Check drm_access_check(const DeviceFacts& facts, const Check& drm_devices);

Check debugfs_check(const DebugfsFacts& facts, const Check& pci_devices);

Check ps_check(const CommandFacts& facts);
Check dmidecode_check(const CommandFacts& facts);

}  // namespace nimba::smi
