// SPDX-License-Identifier: MIT
#include "driver/opening_faults.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

namespace nimba::sim::test {
namespace {

using namespace std::chrono_literals;

Fault fault_of(FaultKind kind)
{
    Fault fault;
    fault.kind = kind;
    return fault;
}

TEST(OpeningFaults, SomeKindsAreOnlyForFilesOrOnlyForDirectories)
{
    for (const FaultKind kind : {FaultKind::kOpen, FaultKind::kBlock}) {
        EXPECT_TRUE(befalls_openings(kind, false)) << to_text(kind);
        EXPECT_TRUE(befalls_openings(kind, true)) << to_text(kind);
    }
    for (const FaultKind kind : {FaultKind::kRead, FaultKind::kShort, FaultKind::kGarbage}) {
        EXPECT_TRUE(befalls_openings(kind, false)) << to_text(kind);
        EXPECT_FALSE(befalls_openings(kind, true)) << to_text(kind);
    }
    EXPECT_FALSE(befalls_openings(FaultKind::kList, false));
    EXPECT_TRUE(befalls_openings(FaultKind::kList, true));
    for (const FaultKind kind : {FaultKind::kWrite, FaultKind::kVanish, FaultKind::kGone}) {
        EXPECT_FALSE(befalls_openings(kind, false)) << to_text(kind);
        EXPECT_FALSE(befalls_openings(kind, true)) << to_text(kind);
    }
}

TEST(OpeningFaults, EarliestFaultOfAKindHasItsEffectBesideThoseOfOtherKinds)
{
    OpeningFaults faults;
    Fault fault = fault_of(FaultKind::kRead);
    fault.bytes = 12;
    fault.error = ENODEV;
    add_effect(fault, "dri/0/jw/info", faults);
    fault.bytes = 3;
    fault.error = EIO;
    add_effect(fault, "dri/0/jw/info", faults);
    fault = fault_of(FaultKind::kBlock);
    fault.length = 5ms;
    add_effect(fault, "dri/0/jw/info", faults);
    fault.length = 9ms;
    add_effect(fault, "dri/0/jw/info", faults);
    EXPECT_EQ(faults.fails_behind, 12U);
    EXPECT_EQ(faults.read_error, ENODEV);
    EXPECT_EQ(faults.pause, 5ms);
    EXPECT_EQ(faults.open_error, 0);
}

TEST(OpeningFaults, ListingFailsAsTheEarliestFaultSays)
{
    OpeningFaults faults;
    Fault fault = fault_of(FaultKind::kList);
    fault.error = ENOMEM;
    add_effect(fault, "dri/0/jw/allocations", faults);
    fault.error = EIO;
    fault.entries = 2;
    add_effect(fault, "dri/0/jw/allocations", faults);
    EXPECT_TRUE(faults.listing_fails);
    EXPECT_EQ(faults.entries, std::nullopt);
    EXPECT_EQ(faults.list_error, ENOMEM);
}

TEST(OpeningFaults, GarbageIsThatOfTheSeedAndThePath)
{
    const auto garbage = [](uint64_t seed, const std::string& path) {
        OpeningFaults faults;
        Fault fault = fault_of(FaultKind::kGarbage);
        fault.seed = seed;
        fault.bytes = 64;
        add_effect(fault, path, faults);
        return faults.garbage.value();
    };
    EXPECT_EQ(garbage(1, "info/0/eclk").size(), 64U);
    EXPECT_EQ(garbage(1, "info/0/eclk"), garbage(1, "info/0/eclk"));
    EXPECT_NE(garbage(1, "info/0/eclk"), garbage(2, "info/0/eclk"));
    EXPECT_NE(garbage(1, "info/0/eclk"), garbage(1, "info/1/eclk"));
}

}  // namespace
}  // namespace nimba::sim::test
