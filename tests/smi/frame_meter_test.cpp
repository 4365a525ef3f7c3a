// SPDX-License-Identifier: MIT
#include "tools/smi/usage/frame_meter.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

constexpr int64_t kSecond = 1'000'000'000;

FrameRates rates(std::optional<double> flips, std::optional<double> blits,
                 std::optional<double> both, std::optional<double> average)
{
    return {flips, blits, both, average};
}

TEST(FrameMeter, OneSampleTellsNoRates)
{
    FrameMeter meter;
    EXPECT_EQ(meter.add({100, 5 * kSecond, 7}), FrameRates{});
}

TEST(FrameMeter, SixtyFlipsInASecondAreSixtyPerSecond)
{
    FrameMeter meter;
    meter.add({100, 5 * kSecond, 7});
    EXPECT_EQ(meter.add({160, 6 * kSecond, 7}), rates(60, 0, 60, 60));
}

TEST(FrameMeter, RatesAreSinceTheSampleBeforeAndTheAverageSinceTheFirst)
{
    FrameMeter meter;
    meter.add({0, 0, 0});
    EXPECT_EQ(meter.add({60, kSecond, 10}), rates(60, 10, 70, 70));
    EXPECT_EQ(meter.add({180, 3 * kSecond, 10}), rates(60, 0, 60, 190.0 / 3));
}

TEST(FrameMeter, LateTimeStampsLoseNothing)
{
    // In single precision these two would be the same.
    FrameMeter meter;
    meter.add({0, 9'000'000 * kSecond, 9'000'000'000'000'000});
    EXPECT_EQ(meter.add({2, 9'000'000 * kSecond + 1'000, 9'000'000'000'000'001}),
              rates(2'000'000, 1'000'000, 3'000'000, 3'000'000));
}

TEST(FrameMeter, WithoutANewTimeStampThereIsNoRateAndTheNextCoversBothTimes)
{
    FrameMeter meter;
    meter.add({10, kSecond, 0});
    EXPECT_EQ(meter.add({10, kSecond, 4}), FrameRates{});
    EXPECT_EQ(meter.add({30, 3 * kSecond, 8}), rates(10, 4, 14, 14));
}

TEST(FrameMeter, CountsThatPassTheirLargestNumberGoOn)
{
    FrameMeter meter;
    meter.add({0xFFFFFFF0, 0, 0});
    EXPECT_EQ(meter.add({0x10, kSecond, 0}), rates(32, 0, 32, 32));
}

TEST(FrameMeter, ADriverThatBeginsAnewIsNoRate)
{
    FrameMeter meter;
    meter.add({1000, 50 * kSecond, 1000});
    EXPECT_EQ(meter.add({10, kSecond, 2}), FrameRates{});
    EXPECT_EQ(meter.add({40, 2 * kSecond, 3}), rates(30, 1, 31, 31));
    // The time went on, but the counts did not.
    EXPECT_EQ(meter.add({1, 3 * kSecond, 0}), rates(std::nullopt, std::nullopt, std::nullopt, 31));
}

TEST(FrameMeter, WhatIsMissingIsNotTakenForZero)
{
    FrameMeter meter;
    meter.add({0, 0, std::nullopt});
    EXPECT_EQ(meter.add({60, kSecond, 5}), rates(60, std::nullopt, std::nullopt, std::nullopt));
    EXPECT_EQ(meter.add({std::nullopt, 2 * kSecond, 5}), FrameRates{});
    EXPECT_EQ(meter.add({60, std::nullopt, 5}), FrameRates{});
    EXPECT_EQ(meter.add({120, 3 * kSecond, 15}), rates(30, 5, 35, 35));
}

TEST(FrameMeter, ExtremeNumbersAreComputedWith)
{
    FrameMeter meter;
    meter.add({0, INT64_MIN, INT64_MIN});
    EXPECT_EQ(meter.add({0, INT64_MAX, INT64_MAX}), rates(0, 1e9, 1e9, 1e9));
}

}  // namespace
}  // namespace nimba::smi
