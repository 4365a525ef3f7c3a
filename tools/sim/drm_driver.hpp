// SPDX-License-Identifier: MIT
#pragma once

#include "glib.hpp"

#include <umockdev.h>

#include <string>

namespace nimba::sim {

// The kernel driver behind one device's DRM nodes: answers their ioctls.
class DrmDriver {
  public:
    // `name` is what the driver's version says; without `answers_version` asking for it fails.
    DrmDriver(std::string name, bool answers_version);
    DrmDriver(const DrmDriver&) = delete;
    DrmDriver& operator=(const DrmDriver&) = delete;
    ~DrmDriver() = default;

    // Puts the driver behind the node, such as "/dev/dri/card0". The driver must outlive the test
    // bed. Throws TestBedError.
    void attach(UMockdevTestbed* test_bed, const std::string& node) const;

  private:
    static gboolean handle_ioctl(UMockdevIoctlBase* handler, UMockdevIoctlClient* client,
                                 gpointer driver);
    bool write_version(UMockdevIoctlClient* client) const;

    const std::string name_;
    const bool answers_version_;
    GObjectOwner<UMockdevIoctlBase> handler_;
};

}  // namespace nimba::sim
