// SPDX-License-Identifier: MIT
// Discovery among the devices of a libdrm stub.
#pragma once

#include "discovery_fixture.hpp"
#include "fake_devices.hpp"
#include "search_directory.hpp"
#include "stub/drm_stub.h"
#include "support/descriptor.hpp"

#include <optional>
#include <string>

namespace nimba::test {

class StubDiscoveryTest : public DiscoveryTest {
  protected:
    ~StubDiscoveryTest() override;

    // Installs the libdrm stub as `name`, holds it and connects devices_ to it.
    void use_stub(const std::string& stub = "drm_full", const std::string& name = "libdrm.so");
    // Holds an installed libdrm stub and connects devices_ to it.
    void hold_stub(const std::string& name, int flags = 0);
    // use_stub, then discover.
    void discover_with(const std::string& stub = "drm_full");

    FakeDevices devices_;
    std::optional<HeldLibrary> stub_library_;
    drm_stub_state* stub_ = nullptr;
};

}  // namespace nimba::test
