// SPDX-License-Identifier: MIT
#include "sysfs_text.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <vector>

namespace nimba::sim {
namespace {

constexpr uint8_t kRevision = 1;
constexpr uint8_t kDisplayClass = 3;

// The head of the PCI configuration space, in hexadecimal. The board has the chip's identifiers.
std::string configuration_space(const PciDevice& device)
{
    std::array<uint8_t, 64> bytes{};
    const auto put = [&](std::size_t offset, uint16_t word) {
        bytes.at(offset) = static_cast<uint8_t>(word & 0xFF);
        bytes.at(offset + 1) = static_cast<uint8_t>(word >> 8);
    };
    put(0x00, device.vendor);
    put(0x02, device.device);
    bytes.at(0x08) = kRevision;
    bytes.at(0x0B) = kDisplayClass;
    put(0x2C, device.vendor);
    put(0x2E, device.device);
    return fmt::format("{:02X}", fmt::join(bytes, ""));
}

// An attribute of any bytes; none without any.
std::string attribute(std::string_view name, std::string_view text)
{
    const std::vector<uint8_t> bytes{text.begin(), text.end()};
    return text.empty() ? "" : fmt::format("H: {}={:02X}\n", name, fmt::join(bytes, ""));
}

// The node's directory below "drm".
std::string directory_name(const DrmDevice& device, DrmNode node)
{
    return node == DrmNode::kPrimary && !device.connectors
               ? fmt::format("minor{}", node_minor(device, node))
               : node_name(device, node);
}

std::string describe_connectors(const std::string& parent, const DrmDevice& device)
{
    std::string text;
    for (const std::string& connector : *device.connectors) {
        fmt::format_to(std::back_inserter(text),
                       "P: {parent}/drm/{card}/{card}-{connector}\n"
                       "E: SUBSYSTEM=drm\n"
                       "E: DEVTYPE=drm_connector\n"
                       "L: device=../../{card}\n"
                       "\n",
                       fmt::arg("parent", parent),
                       fmt::arg("card", node_name(device, DrmNode::kPrimary)),
                       fmt::arg("connector", connector));
    }
    return text;
}

}  // namespace

std::string pci_device_path(const PciAddress& address)
{
    return fmt::format("/devices/pci{:04x}:00/{}", address.domain, to_text(address));
}

std::string platform_device_path(const PlatformDevice& device)
{
    return fmt::format("/devices/platform/{}", device.name);
}

std::string describe_pci_device(const PciDevice& device, const std::string& driver,
                                const PcieLink& link)
{
    return fmt::format(
        "P: {path}\n"
        "E: SUBSYSTEM=pci\n"
        "E: DRIVER={driver}\n"
        "E: PCI_CLASS={class_code:X}0000\n"
        "E: PCI_ID={vendor:04X}:{device:04X}\n"
        "E: PCI_SUBSYS_ID={vendor:04X}:{device:04X}\n"
        "E: PCI_SLOT_NAME={address}\n"
        "A: class=0x{class_code:02x}0000\\n\n"
        "A: vendor=0x{vendor:04x}\\n\n"
        "A: device=0x{device:04x}\\n\n"
        "A: subsystem_vendor=0x{vendor:04x}\\n\n"
        "A: subsystem_device=0x{device:04x}\\n\n"
        "A: revision=0x{revision:02x}\\n\n"
        "H: config={config}\n"
        "{link_width}"
        "{link_speed}"
        "\n",
        fmt::arg("path", pci_device_path(device.address)), fmt::arg("driver", driver),
        fmt::arg("class_code", kDisplayClass), fmt::arg("vendor", device.vendor),
        fmt::arg("device", device.device), fmt::arg("address", to_text(device.address)),
        fmt::arg("revision", kRevision), fmt::arg("config", configuration_space(device)),
        fmt::arg("link_width", attribute("current_link_width", link.width)),
        fmt::arg("link_speed", attribute("current_link_speed", link.speed)));
}

std::string describe_platform_device(const PlatformDevice& device)
{
    return fmt::format(
        "P: {path}\n"
        "E: SUBSYSTEM=platform\n"
        "E: DRIVER={name}\n"
        "E: MODALIAS=platform:{name}\n"
        "\n",
        fmt::arg("path", platform_device_path(device)), fmt::arg("name", device.name));
}

// The node is described with contents, which makes it a plain file that umockdev shows as a device.
std::string describe_drm_node(const std::string& parent, const DrmDevice& device, DrmNode node)
{
    const std::string connectors =
        node == DrmNode::kPrimary && device.connectors ? describe_connectors(parent, device) : "";
    return fmt::format(
        "P: {parent}/drm/{directory}\n"
        "N: dri/{name}=00\n"
        "E: SUBSYSTEM=drm\n"
        "E: DEVNAME=/dev/dri/{name}\n"
        "E: DEVTYPE=drm_minor\n"
        "E: MAJOR=226\n"
        "E: MINOR={minor}\n"
        "A: dev=226:{minor}\\n\n"
        "L: device=../../../{parent_name}\n"
        "\n"
        "{connectors}",
        fmt::arg("parent", parent), fmt::arg("directory", directory_name(device, node)),
        fmt::arg("connectors", connectors), fmt::arg("name", node_name(device, node)),
        fmt::arg("minor", node_minor(device, node)),
        fmt::arg("parent_name", std::filesystem::path{parent}.filename().native()));
}

}  // namespace nimba::sim
