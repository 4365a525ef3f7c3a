// SPDX-License-Identifier: MIT
// Asking a command `ps` that a test makes up for the name of a process.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/environment.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace nimba::test {

class ProcessCommand : public testing::Test {
  protected:
    ProcessCommand() { std::snprintf(device_.app_name, sizeof device_.app_name, "before"); }

    // Makes `ps` a shell script with these lines. $here is the directory it stands in.
    void make_ps(const std::string& lines) const
    {
        const std::string ps =
            directory_.write("ps", "#!/bin/sh\nhere=" + directory_.path().string() + '\n' + lines);
        std::filesystem::permissions(ps, std::filesystem::perms::owner_all);
    }

    bool exists(const char* name) const
    {
        return std::filesystem::exists(directory_.path() / name);
    }

    // Asks for the name of a process; fills status_. Returns the device's name.
    std::string name_of(const std::string& pid)
    {
        std::snprintf(device_.pid, sizeof device_.pid, "%s", pid.c_str());
        status_ = get_AppName_info(&device_);
        return device_.app_name;
    }

    TempDirectory directory_;
    const ScopedVariable path_{"PATH", directory_.path().string() + ":/usr/bin:/bin"};
    data_vectors device_{};
    std::int32_t status_ = 42;
};

}  // namespace nimba::test
