// SPDX-License-Identifier: MIT
// Which pages a device context sees when memory is mapped into its address space.
#include "driver/address_space.hpp"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace nimba::sim {

std::ostream& operator<<(std::ostream& stream, const PageRun& run)
{
    return stream << std::hex << "{begin 0x" << run.begin << ", end 0x" << run.end
                  << ", physical 0x" << run.physical << ", segment " << run.segment << ", snoop "
                  << run.snoop << '}';
}

}  // namespace nimba::sim

namespace nimba::sim::test {
namespace {

using Runs = std::vector<PageRun>;

TEST(AddressSpace, HasNoPagesInTheBeginning)
{
    EXPECT_EQ(AddressSpace{}.runs(), Runs{});
}

TEST(AddressSpace, HasTheMappedPagesInTheOrderOfTheirAddresses)
{
    AddressSpace space;
    space.map({0x9000, 0x2000, 0x50000, 3, true});
    space.map({0x1000, 0x1000, 0x70000, 4, false});
    EXPECT_EQ(space.runs(), (Runs{{1, 2, 0x70000, 4, false}, {9, 0xb, 0x50000, 3, true}}));
}

TEST(AddressSpace, MemoryTakesEveryPageThatItTouches)
{
    AddressSpace space;
    space.map({0x1000, 1, 0, 0, false});
    space.map({0x3800, 0x1000, 0, 0, false});
    space.map({0x8000, 0x1001, 0, 0, false});
    EXPECT_EQ(space.runs(), (Runs{{1, 2, 0, 0, false}, {3, 5, 0, 0, false}, {8, 10, 0, 0, false}}));
}

TEST(AddressSpace, MemoryWithoutSizeMapsNothing)
{
    AddressSpace space;
    space.map({0x1800, 0, 0, 0, false});
    EXPECT_EQ(space.runs(), Runs{});
}

TEST(AddressSpace, FirstMemoryAtAnAddressWins)
{
    AddressSpace space;
    space.map({0x4000, 0x2000, 0x10000, 1, false});
    space.map({0x5000, 0x2000, 0x20000, 2, false});
    space.map({0x3000, 0x2000, 0x30000, 3, false});
    space.map({0x4000, 0x1000, 0x40000, 4, false});
    EXPECT_EQ(
        space.runs(),
        (Runs{{3, 4, 0x30000, 3, false}, {4, 6, 0x10000, 1, false}, {6, 7, 0x21000, 2, false}}));
}

TEST(AddressSpace, MemoryAroundAnotherOneFillsTheGapsWithItsOwnPages)
{
    AddressSpace space;
    space.map({0x3000, 0x1000, 0x10000, 1, false});
    space.map({0x5000, 0x1000, 0x20000, 2, false});
    space.map({0x2000, 0x6000, 0x30000, 3, true});
    EXPECT_EQ(space.runs(), (Runs{{2, 3, 0x30000, 3, true},
                                  {3, 4, 0x10000, 1, false},
                                  {4, 5, 0x32000, 3, true},
                                  {5, 6, 0x20000, 2, false},
                                  {6, 8, 0x34000, 3, true}}));
}

TEST(AddressSpace, ReservedPagesAreNeverMapped)
{
    AddressSpace space;
    space.reserve(4, 6);
    space.map({0x3000, 0x4000, 0x10000, 1, false});
    EXPECT_EQ(space.runs(), (Runs{{3, 4, 0x10000, 1, false}, {6, 7, 0x13000, 1, false}}));
}

TEST(AddressSpace, NothingIsMappedBeyondFortyEightBits)
{
    AddressSpace space;
    space.map({0xfffffffff000, 0x3000, 0x10000, 1, false});
    space.map({0x1000000000000, 0x1000, 0x20000, 2, false});
    space.map({0x7fffffffffffffff, 0x800000000000, 0x30000, 3, false});
    EXPECT_EQ(space.runs(), (Runs{{0xfffffffff, 0x1000000000, 0x10000, 1, false}}));
}

}  // namespace
}  // namespace nimba::sim::test
