// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/split.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace nimba::smi {
namespace {

TEST(AddressSplit, GivesEachTableEntryItsAddresses)
{
    const AddressSplit split;
    EXPECT_EQ(split.total(), 48U);
    EXPECT_EQ(split.table_range(0, 1), (AddressRange{0x8000000000, 0x10000000000}));
    EXPECT_EQ(split.table_range(1, 4), (AddressRange{0x100000000, 0x140000000}));
    EXPECT_EQ(split.table_range(2, 2048), (AddressRange{0x100000000, 0x100200000}));
}

TEST(AddressSplit, GivesEachPageItsAddresses)
{
    const AddressSplit split;
    EXPECT_EQ(split.page_range(2, 2048, 17, false), (AddressRange{0x100011000, 0x100012000}));
    EXPECT_EQ(split.page_range(2, 2048, 31, true), (AddressRange{0x1001f0000, 0x100200000}));
    EXPECT_EQ(split.page_range(1, 4, 1, true), (AddressRange{0x100200000, 0x100400000}));
    EXPECT_EQ(split.page_range(0, 1, 511, true), (AddressRange{0xffc0000000, 0x10000000000}));
}

TEST(AddressSplit, HasNoPlaceForWhatLiesOutside)
{
    const AddressSplit split;
    EXPECT_EQ(split.table_range(0, 511), (AddressRange{0xff8000000000, 0x1000000000000}));
    EXPECT_EQ(split.table_range(0, 512), std::nullopt);
    EXPECT_EQ(split.table_range(0, -1), std::nullopt);
    EXPECT_EQ(split.table_range(-1, 0), std::nullopt);
    EXPECT_EQ(split.table_range(3, 0), std::nullopt);
    EXPECT_EQ(split.table_range(2, INT32_MIN), std::nullopt);
    EXPECT_EQ(split.page_range(2, 0, 512, false), std::nullopt);
    EXPECT_EQ(split.page_range(2, 0, 32, true), std::nullopt);
    EXPECT_EQ(split.page_range(2, 0, -1, false), std::nullopt);
    EXPECT_EQ(split.page_range(0, 512, 0, true), std::nullopt);
}

TEST(AddressSplit, TakesOtherBits)
{
    const auto split = parse_split("1,2,3,3,10");
    ASSERT_TRUE(split);
    EXPECT_EQ(split->total(), 19U);
    EXPECT_EQ(split->table_range(2, 5), (AddressRange{0xa000, 0xc000}));
    EXPECT_EQ(split->page_range(2, 5, 7, false), (AddressRange{0xbc00, 0xc000}));
    // A large page would be larger than the sub-table's addresses.
    EXPECT_EQ(split->page_range(2, 5, 0, true), std::nullopt);
    EXPECT_EQ(parse_split("9,9,9,9,12"), AddressSplit{});
}

TEST(AddressSplit, RefusesWhatNoAddressHas)
{
    for (const char* const text : {"", "9", "9,9,9,9", "9,9,9,9,12,1", "9,9,9,9,", "0,9,9,9,12",
                                   "9,9,9,9,x", "20,20,10,10,4", "-9,9,9,9,12", " 9,9,9,9,12"}) {
        EXPECT_EQ(parse_split(text), std::nullopt) << text;
    }
    EXPECT_TRUE(parse_split("20,20,10,10,3"));
}

}  // namespace
}  // namespace nimba::smi
