// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace nimba::smi {

struct CaptureOptions {
    std::string file{};
    uint64_t samples = 1;
    std::chrono::milliseconds interval{1000};  // from the beginning of a sample to that of the next
    bool redact = false;
};

}  // namespace nimba::smi
