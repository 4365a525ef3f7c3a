// SPDX-License-Identifier: MIT
// What the driver's own files add to discovery's records.
#pragma once

#include "tools/smi/adapter.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

// The driver's info node in debugfs, which tells the driver kind:
// "/sys/kernel/debug/dri/<card>/jw/info" or ".../qv/info" by vendor.
std::string driver_info_path(int card, uint32_t vendor_id);

// "/dev/dri/card<card>"
std::string primary_node_path(int card);

bool exists(const std::string& path);

enum class Access { kOpen, kDenied, kAbsent };

// Whether the file can be read; for want of permission it is kDenied, for any other reason kAbsent.
Access read_access(const std::string& path);

// The driver kind of an adapter that discovery did not see as VA: legacy when its info node could
// be read.
DriverKind driver_kind_without_va(Access info_node);

// A PCI identifier, "vendor" or "device", and the card number, from the adapter's PCI directory in
// sysfs.
std::optional<uint32_t> pci_id_in(int pci_directory, const char* name);
std::optional<int> card_in(int pci_directory);

}  // namespace nimba::smi
