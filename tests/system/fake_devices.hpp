// SPDX-License-Identifier: MIT
// DRM devices that exist in a libdrm stub only; their nodes are files of a temporary directory.
#pragma once

#include "stub/drm_stub.h"
#include "support/temp_directory.hpp"

#include <array>
#include <cstdint>
#include <deque>
#include <string>

namespace nimba::test {

struct PciLocation {
    std::uint16_t domain = 0;
    std::uint8_t bus = 0;
    std::uint8_t device = 0;
    std::uint8_t function = 0;
};

// The node paths that a device reports; an empty path is a node that is not available.
struct NodePaths {
    std::string primary;
    std::string control;
    std::string render;
};

class FakeDevices final {
  public:
    // A node file that opens for reading and writing; returns its path.
    std::string node(const std::string& name) const { return directory_.write(name, ""); }
    // A path that cannot be opened.
    std::string missing_node(const std::string& name) const
    {
        return (directory_.path() / name).string();
    }

    // Adds a PCI device behind the others and returns it.
    drmDevice& plug(std::uint16_t vendor, std::uint16_t device, PciLocation location,
                    const NodePaths& paths);
    // As plug, with the primary node "/dev/dri/card<card>", which does not exist, and a render node
    // that opens.
    drmDevice& plug_card(std::uint16_t vendor, std::uint16_t device, PciLocation location,
                         int card);
    // The render node of the device that plug_card made for the card.
    std::string render_node(int card) const
    {
        return missing_node("renderD" + std::to_string(128 + card));
    }

    // Makes these devices the ones that the stub reports.
    void connect(drm_stub_state& stub);

  private:
    struct Device {
        std::array<std::string, DRM_NODE_MAX> paths;
        std::array<char*, DRM_NODE_MAX> nodes{};
        drmPciBusInfo location{};
        drmPciDeviceInfo identity{};
        drmDevice device{};
    };

    TempDirectory directory_;
    std::deque<Device> devices_;
};

}  // namespace nimba::test
