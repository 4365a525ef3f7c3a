// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"

#include <array>
#include <cstdint>

namespace nimba::sim {

// What a kernel-interface library asks the driver for.
struct Counters {
    int64_t time = 0;  // of the last flip, in nanoseconds since the machine began
    int64_t flips = 0;
    std::array<uint32_t, kBandwidthWords> hardware{};  // MB/s
    // Percentages, as the extended record has them: word 2 is the 3D engine, 3 the VPP, 4 and 5 are
    // VCP0 and VCP1, 6 copies, 7 to 9 are the VPP's parts; the others are 0. A record of three
    // words has words 2, 4 and 7.
    std::array<uint32_t, kUsageWords> usage{};
};

}  // namespace nimba::sim
