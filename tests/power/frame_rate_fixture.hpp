// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace nimba::test {

// Rates as the library writes them, compared bit by bit.
using RateBits = std::array<std::uint32_t, 4>;

constexpr std::uint32_t kNoRate = 0xEEEEEEEE;  // what no call has written

inline RateBits bits_of(const FpsInfo& info)
{
    RateBits bits{};
    static_assert(sizeof bits == sizeof info);
    std::memcpy(bits.data(), &info, sizeof info);
    return bits;
}

inline RateBits rates(float flips, float blits, float flips_blits, float average_since)
{
    return {std::bit_cast<std::uint32_t>(flips), std::bit_cast<std::uint32_t>(blits),
            std::bit_cast<std::uint32_t>(flips_blits), std::bit_cast<std::uint32_t>(average_since)};
}

inline RateBits flip_rates(float flips, float average_since)
{
    return {std::bit_cast<std::uint32_t>(flips), kNoRate, kNoRate,
            std::bit_cast<std::uint32_t>(average_since)};
}

constexpr RateBits kNoRates{kNoRate, kNoRate, kNoRate, kNoRate};

inline FpsInfo no_rates()
{
    FpsInfo info;
    std::memset(&info, 0xEE, sizeof info);
    return info;
}

}  // namespace nimba::test
