// SPDX-License-Identifier: MIT
#include "machine.hpp"

#include <fmt/core.h>

#include <regex>

namespace nimba::sim {
namespace {

constexpr const char* kVirtualMemoryDirectory = "qv";

}  // namespace

std::string to_text(const PciAddress& address)
{
    return fmt::format("{:04x}:{:02x}:{:02x}.{:x}", address.domain, address.bus, address.device,
                       address.function);
}

std::optional<PciAddress> parse_pci_address(const std::string& text)
{
    static const std::regex kShape{
        "([[:xdigit:]]{4}):([[:xdigit:]]{2}):([01][[:xdigit:]])\\.([0-7])"};
    std::smatch part;
    if (!std::regex_match(text, part, kShape)) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t index) { return std::stoul(part.str(index), nullptr, 16); };
    return PciAddress{static_cast<uint16_t>(number(1)), static_cast<uint8_t>(number(2)),
                      static_cast<uint8_t>(number(3)), static_cast<uint8_t>(number(4))};
}

std::string node_name(const DrmDevice& device, DrmNode node)
{
    switch (node) {
        case DrmNode::kPrimary:
            return fmt::format("card{}", device.card);
        case DrmNode::kControl:
            return fmt::format("controlD{}", node_minor(device, node));
        case DrmNode::kRender:
            break;
    }
    return fmt::format("renderD{}", node_minor(device, node));
}

int node_minor(const DrmDevice& device, DrmNode node)
{
    switch (node) {
        case DrmNode::kPrimary:
            return device.card;
        case DrmNode::kControl:
            return device.card + 64;
        case DrmNode::kRender:
            break;
    }
    return device.render;
}

std::string node_path(const Adapter& adapter, NodeDirectory directory)
{
    const int card = adapter.drm.card;
    switch (directory) {
        case NodeDirectory::kDebug:
            return fmt::format("dri/{}/{}", card, adapter.driver_dir);
        case NodeDirectory::kInfo:
            return fmt::format("info/{}", card);
        case NodeDirectory::kHwmon:
            return fmt::format("hwmon/{0}/hwmon{0}", card);
        case NodeDirectory::kProc:
            break;
    }
    return fmt::format("proc/gpuinfo_{}", card);
}

std::string debug_directory(const Adapter& adapter)
{
    return node_path(adapter, NodeDirectory::kDebug);
}

std::string virtual_memory_directory(const Adapter& adapter)
{
    return fmt::format("dri/{}/{}", adapter.drm.card, kVirtualMemoryDirectory);
}

bool has_virtual_memory_beside(const Adapter& adapter)
{
    return adapter.driver_dir != kVirtualMemoryDirectory;
}

}  // namespace nimba::sim
