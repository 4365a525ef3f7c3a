// SPDX-License-Identifier: MIT
#include "fake_devices.hpp"

#include <cstddef>

namespace nimba::test {

drmDevice& FakeDevices::plug(std::uint16_t vendor, std::uint16_t device, PciLocation location,
                             const NodePaths& paths)
{
    Device& made = devices_.emplace_back();
    made.paths[DRM_NODE_PRIMARY] = paths.primary;
    made.paths[DRM_NODE_CONTROL] = paths.control;
    made.paths[DRM_NODE_RENDER] = paths.render;
    for (std::size_t type = 0; type < made.paths.size(); ++type) {
        made.nodes[type] = made.paths[type].data();
        if (!made.paths[type].empty()) {
            made.device.available_nodes |= 1 << type;
        }
    }
    made.location.domain = location.domain;
    made.location.bus = location.bus;
    made.location.dev = location.device;
    made.location.func = location.function;
    made.identity.vendor_id = vendor;
    made.identity.device_id = device;
    made.device.nodes = made.nodes.data();
    made.device.bustype = DRM_BUS_PCI;
    made.device.businfo.pci = &made.location;
    made.device.deviceinfo.pci = &made.identity;
    return made.device;
}

drmDevice& FakeDevices::plug_card(std::uint16_t vendor, std::uint16_t device, PciLocation location,
                                  int card)
{
    return plug(
        vendor, device, location,
        {"/dev/dri/card" + std::to_string(card), "", node("renderD" + std::to_string(128 + card))});
}

void FakeDevices::connect(drm_stub_state& stub)
{
    stub.device_count = 0;
    for (Device& device : devices_) {
        stub.devices[stub.device_count++] = &device.device;
    }
}

}  // namespace nimba::test
