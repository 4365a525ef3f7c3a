// SPDX-License-Identifier: MIT
// Devices as umockdev's device descriptions: P: path, N: node, E: property, A: attribute, H: bytes,
// L: link.
#pragma once

#include "machine.hpp"

#include <string>

namespace nimba::sim {

// The device's directory, below /sys.
std::string pci_device_path(const PciAddress& address);
std::string platform_device_path(const PlatformDevice& device);

std::string describe_pci_device(const PciDevice& device, const std::string& driver,
                                const PcieLink& link);
std::string describe_platform_device(const PlatformDevice& device);

// `parent` is the directory of the device that has the node. The primary node has the connectors.
std::string describe_drm_node(const std::string& parent, const DrmDevice& device, DrmNode node);

}  // namespace nimba::sim
