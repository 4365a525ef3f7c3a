// SPDX-License-Identifier: MIT
// The driver's debug directory of DRM minor 0, which the page tables are read below. In a program
// that links driver_root.cpp it is a directory of the test's own: the program's functions that open
// files stand before the C library's.
#pragma once

#include "support/temp_directory.hpp"

#include <filesystem>

namespace nimba::test {

// In its scope what is opened below /sys/kernel/debug/dri/0/qv is opened below path(), which is
// empty at first. There is one at a time.
class DriverRoot final {
  public:
    DriverRoot();
    ~DriverRoot();
    DriverRoot(const DriverRoot&) = delete;
    DriverRoot& operator=(const DriverRoot&) = delete;

    const std::filesystem::path& path() const { return directory_.path(); }

  private:
    TempDirectory directory_;
};

}  // namespace nimba::test
