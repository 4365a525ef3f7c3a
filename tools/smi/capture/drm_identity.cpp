// SPDX-License-Identifier: MIT
#include "tools/smi/capture/drm_identity.hpp"

#include "tools/descriptor.hpp"

#include <dlfcn.h>
#include <fcntl.h>
#include <xf86drm.h>

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace nimba::smi {
namespace {

constexpr std::array kLibraries{"libdrm.so", "libdrm.so.2"};

// The types in the order in which a device's nodes are tried.
constexpr std::array<std::pair<int, archive::DrmNodeType>, 3> kTypes{{
    {DRM_NODE_RENDER, archive::DrmNodeType::kRender},
    {DRM_NODE_CONTROL, archive::DrmNodeType::kControl},
    {DRM_NODE_PRIMARY, archive::DrmNodeType::kPrimary},
}};

struct Unload {
    void operator()(void* library) const { ::dlclose(library); }
};

struct DrmFunctions {
    decltype(&::drmGetDevices2) get_devices;
    decltype(&::drmFreeDevices) free_devices;
    decltype(&::drmGetVersion) get_version;
    decltype(&::drmFreeVersion) free_version;

    [[nodiscard]] bool usable() const
    {
        return get_devices != nullptr && free_devices != nullptr && get_version != nullptr &&
               free_version != nullptr;
    }
};

template <typename Function>
Function look_up(void* library, const char* name)
{
    return reinterpret_cast<Function>(::dlsym(library, name));
}

DrmFunctions functions_of(void* library)
{
    return {look_up<decltype(&::drmGetDevices2)>(library, "drmGetDevices2"),
            look_up<decltype(&::drmFreeDevices)>(library, "drmFreeDevices"),
            look_up<decltype(&::drmGetVersion)>(library, "drmGetVersion"),
            look_up<decltype(&::drmFreeVersion)>(library, "drmFreeVersion")};
}

archive::PciIdentity pci_identity(const drmPciBusInfo& place, const drmPciDeviceInfo& device)
{
    return {
        fmt::format("{:04x}:{:02x}:{:02x}.{:x}", place.domain, place.bus, place.dev, place.func),
        device.vendor_id,
        device.device_id,
        device.subvendor_id,
        device.subdevice_id,
        device.revision_id};
}

// Of a text that need not end in a NUL.
std::string text_of(const char* text, int length)
{
    return text == nullptr || length <= 0 ? ""
                                          : std::string(text, static_cast<std::size_t>(length));
}

std::optional<archive::DrmVersion> version_of(const DrmFunctions& drm, int node)
{
    const std::unique_ptr<drmVersion, decltype(drm.free_version)> version{drm.get_version(node),
                                                                          drm.free_version};
    if (!version) {
        return std::nullopt;
    }
    return archive::DrmVersion{text_of(version->name, version->name_len),
                               version->version_major,
                               version->version_minor,
                               version->version_patchlevel,
                               text_of(version->date, version->date_len),
                               text_of(version->desc, version->desc_len)};
}

archive::DrmDevice describe(Session& session, const DrmFunctions& drm, const drmDevice& device)
{
    archive::DrmDevice described;
    if (device.bustype == DRM_BUS_PCI) {
        described.pci = pci_identity(*device.businfo.pci, *device.deviceinfo.pci);
    }
    bool opened = false;
    for (const auto& [index, type] : kTypes) {
        if ((device.available_nodes & (1 << index)) == 0) {
            continue;
        }
        const char* const path = device.nodes[index];
        archive::DrmNode& node = described.nodes.emplace_back(archive::DrmNode{type, path, {}});
        if (opened) {
            continue;
        }
        const tools::Descriptor file{session.call(
            std::string{"open "} + path, [&] { return ::open(path, O_RDWR | O_CLOEXEC); })};
        if (!file) {
            node.error = ::strerrorname_np(errno);
            continue;
        }
        opened = true;
        described.version =
            session.call("drmGetVersion", [&] { return version_of(drm, file.get()); });
    }
    return described;
}

void describe_devices(Session& session, const DrmFunctions& drm, archive::Drm& told)
{
    const int count =
        session.call("drmGetDevices2", [&] { return drm.get_devices(0, nullptr, 0); });
    if (count < 1) {
        return;
    }
    std::vector<drmDevicePtr> devices(static_cast<std::size_t>(count));
    const int listed =
        session.call("drmGetDevices2", [&] { return drm.get_devices(0, devices.data(), count); });
    devices.resize(static_cast<std::size_t>(std::clamp(listed, 0, count)));
    for (const drmDevicePtr device : devices) {
        told.devices.push_back(describe(session, drm, *device));
    }
    drm.free_devices(devices.data(), static_cast<int>(devices.size()));
}

}  // namespace

archive::Drm read_drm_identity(Session& session)
{
    archive::Drm told;
    for (const char* const name : kLibraries) {
        const std::unique_ptr<void, Unload> library{::dlopen(name, RTLD_LAZY)};
        if (!library) {
            continue;
        }
        told.library = name;
        if (const DrmFunctions drm = functions_of(library.get()); drm.usable()) {
            describe_devices(session, drm, told);
        }
        break;
    }
    return told;
}

}  // namespace nimba::smi
