// SPDX-License-Identifier: MIT
// libdrm, as it was loaded by gpuinfo_nimba_init.
#pragma once

#include "core/handles.hpp"

#include <xf86drm.h>

#include <memory>
#include <vector>

namespace nimba {

// The machine's DRM devices, in libdrm's order; libdrm's memory lives as long as the list.
class DrmDevices final {
  public:
    // Lists the devices. Empty when libdrm is not loaded or reports none.
    static DrmDevices list();

    DrmDevices(DrmDevices&& other) noexcept = default;
    DrmDevices& operator=(DrmDevices&&) = delete;
    ~DrmDevices();

    [[nodiscard]] const std::vector<drmDevicePtr>& entries() const { return entries_; }

  private:
    explicit DrmDevices(std::vector<drmDevicePtr> entries) : entries_{std::move(entries)} {}

    std::vector<drmDevicePtr> entries_;
};

// Opens the render, control or primary node of a device, the first of them that the device has and
// that opens. Empty when none opens or the driver behind it does not tell its version.
Descriptor open_drm_node(const drmDevice& device);

}  // namespace nimba
