// SPDX-License-Identifier: MIT
#pragma once

#include "driver/counters.hpp"
#include "glib.hpp"

#include <umockdev.h>

#include <functional>
#include <string>

namespace nimba::sim {

// The kernel driver behind one device's DRM nodes: answers their ioctls.
class DrmDriver {
  public:
    // `name` is what the driver's version says; without `answers_version` asking for it fails.
    // `counters` is called, in the test bed's thread, when a kernel-interface library asks for the
    // device's counters; a device without it refuses.
    DrmDriver(std::string name, bool answers_version, std::function<Counters()> counters = {});
    DrmDriver(const DrmDriver&) = delete;
    DrmDriver& operator=(const DrmDriver&) = delete;
    ~DrmDriver() = default;

    // Puts the driver behind the node, such as "/dev/dri/card0". The driver must outlive the test
    // bed. Throws TestBedError.
    void attach(UMockdevTestbed* test_bed, const std::string& node) const;

  private:
    static gboolean handle_ioctl(UMockdevIoctlBase* handler, UMockdevIoctlClient* client,
                                 gpointer driver);
    void answer_version(UMockdevIoctlClient* client) const;
    void answer_counters(UMockdevIoctlClient* client) const;
    bool write_version(UMockdevIoctlClient* client) const;
    bool write_counters(UMockdevIoctlClient* client) const;

    const std::string name_;
    const bool answers_version_;
    const std::function<Counters()> counters_;
    GObjectOwner<UMockdevIoctlBase> handler_;
};

}  // namespace nimba::sim
