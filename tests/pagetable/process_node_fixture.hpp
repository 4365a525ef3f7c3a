// SPDX-License-Identifier: MIT
// Reading the process id of a device from a node that a test makes up.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace nimba::test {

inline constexpr const char* kNoPid = "Fail to read pid info. skip...\n";

class ProcessNode : public testing::Test {
  protected:
    ProcessNode() { std::snprintf(device_.pid, sizeof device_.pid, "before"); }

    std::string path() const { return (directory_.path() / "info").string(); }

    // Reads the node at path(); fills status_ and output_. Returns the device's process id.
    std::string pid()
    {
        output_ = stdout_of([&] { status_ = get_Pid_info(&device_, path().c_str()); });
        return device_.pid;
    }
    // Reads a node with this text.
    std::string pid_of(const std::string& node)
    {
        directory_.write("info", node);
        return pid();
    }

    TempDirectory directory_;
    data_vectors device_{};
    std::int32_t status_ = 42;
    std::string output_;
};

}  // namespace nimba::test
