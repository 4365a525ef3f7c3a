// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

namespace nimba::smi {

// What every command can be told.
struct Options {
    bool json = false;
    bool verbose = false;
    std::chrono::milliseconds timeout{10'000};  // for each call of a worker
    std::string library = "libnimba_mgmt_interface.so";
};

}  // namespace nimba::smi
