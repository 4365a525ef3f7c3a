// SPDX-License-Identifier: MIT
// What "doctor" has to know of the machine, whether or not the management library can be loaded.
#pragma once

#include "tools/smi/doctor/facts.hpp"

#include <string>
#include <vector>

namespace nimba::smi {

// Loads libdrm as the management library does.
LibdrmFacts libdrm_facts();

// The PCI devices of the product's vendors, by bus id. Returns them, or the error number of listing
// `directory` in `error`.
std::vector<PciAdapter> product_pci_devices(int& error,
                                            const std::string& directory = "/sys/bus/pci/devices");

DeviceFacts device_facts();

DebugfsFacts debugfs_facts(const std::string& directory = "/sys/kernel/debug");

// Where the command is on the PATH `path`; empty for nowhere.
std::string command_on(const std::string& path, const char* name);

// Both run the command that they are about.
void look_at_ps(CommandFacts& facts);
void look_at_dmidecode(CommandFacts& facts);

}  // namespace nimba::smi
