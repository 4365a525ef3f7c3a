// SPDX-License-Identifier: MIT
#include "core/drm_library.hpp"

#include "core/shared_library.hpp"
#include "nimba_mgmt_interface.h"

#include <dlfcn.h>
#include <fcntl.h>

#include <algorithm>
#include <array>

namespace nimba {
namespace {

struct DrmFunctions {
    decltype(&drmGetVersion) get_version;
    decltype(&drmGetDevices2) get_devices2;
    decltype(&drmGetDevices) get_devices;
    decltype(&drmFreeDevices) free_devices;
    decltype(&drmFreeVersion) free_version;

    [[nodiscard]] bool usable() const
    {
        return get_version != nullptr && (get_devices2 != nullptr || get_devices != nullptr) &&
               free_devices != nullptr;
    }
};

// Written by gpuinfo_nimba_init alone: the functions of the libdrm tried last; not to be called
// unless they are usable.
DrmFunctions drm{};

DrmFunctions look_up(const SharedLibrary& library)
{
    return {
        .get_version = library.function<decltype(&drmGetVersion)>("drmGetVersion"),
        .get_devices2 = library.function<decltype(&drmGetDevices2)>("drmGetDevices2"),
        .get_devices = library.function<decltype(&drmGetDevices)>("drmGetDevices"),
        .free_devices = library.function<decltype(&drmFreeDevices)>("drmFreeDevices"),
        .free_version = library.function<decltype(&drmFreeVersion)>("drmFreeVersion"),
    };
}

int get_devices(drmDevicePtr* devices, int capacity)
{
    return drm.get_devices2 != nullptr ? drm.get_devices2(0, devices, capacity)
                                       : drm.get_devices(devices, capacity);
}

Descriptor open_node(const drmDevice& device)
{
    for (const int type : {DRM_NODE_RENDER, DRM_NODE_CONTROL, DRM_NODE_PRIMARY}) {
        if ((device.available_nodes & (1 << type)) == 0) {
            continue;
        }
        Descriptor node{::open(device.nodes[type], O_RDWR | O_CLOEXEC)};
        if (node) {
            return node;
        }
    }
    return Descriptor{-1};
}

bool tells_version(const Descriptor& node)
{
    const drmVersionPtr version = drm.get_version(node.get());
    if (version != nullptr && drm.free_version != nullptr) {
        drm.free_version(version);
    }
    return version != nullptr;
}

}  // namespace

DrmDevices DrmDevices::list()
{
    if (!drm.usable()) {
        return DrmDevices{{}};
    }
    const int reported = get_devices(nullptr, 0);
    if (reported < 1) {
        return DrmDevices{{}};
    }
    std::vector<drmDevicePtr> entries(static_cast<std::size_t>(reported));
    // Devices come and go between the two calls: the array bounds what the second may report.
    const int listed = std::min(get_devices(entries.data(), reported), reported);
    entries.resize(static_cast<std::size_t>(std::max(listed, 0)));
    return DrmDevices{std::move(entries)};
}

DrmDevices::~DrmDevices()
{
    if (!entries_.empty()) {
        drm.free_devices(entries_.data(), static_cast<int>(entries_.size()));
    }
}

Descriptor open_drm_node(const drmDevice& device)
{
    Descriptor node = open_node(device);
    return node && tells_version(node) ? std::move(node) : Descriptor{-1};
}

}  // namespace nimba

int32_t gpuinfo_nimba_init()
{
    using nimba::SharedLibrary;
    SharedLibrary library{"libdrm.so", RTLD_LAZY};
    if (!library) {
        library = SharedLibrary{"libdrm.so.2", RTLD_LAZY};
    }
    // With neither file the functions may still be in the process, linked into the host.
    nimba::drm = nimba::look_up(library);
    if (!nimba::drm.usable()) {
        return 0;
    }
    library.keep_loaded();
    return 1;
}
