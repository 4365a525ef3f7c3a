// SPDX-License-Identifier: MIT
// Lines, keys and fields of the text of one allocation.
#include "allocation_keys.hpp"
#include "allocation_text_fixture.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <string>

namespace nimba::test {
namespace {

using namespace std::string_literals;

TEST_F(AllocationText, FillsEachFieldFromItsOwnLine)
{
    const Record expected{257, 2,  -3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                          13,  14, -15, 16, 17, 18, 19, 20, 21, 1,  1};
    EXPECT_EQ(read("handle=101\ndevice=2\nwidth=-3\nheight=4\npitch=5\nbit_cnt=6\nsecured=7\n"
                   "size=8\ntile=9\ncpu_visible=10\ncache_type=11\npool_type=12\nat_type=13\n"
                   "segmentid=14\nhw_format=-15\ncompress_format=16\nbl_slot_index=17\n"
                   "gpu_virt_addr=18\nimported=19\nfb_offset=20\nshare=21\n"),
              expected);
}

TEST_F(AllocationText, MayComeInAnyOrder)
{
    const Record expected{257, 2,  -3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                          13,  14, -15, 16, 17, 18, 19, 20, 21, 1,  1};
    EXPECT_EQ(read("share=21\nfb_offset=20\nimported=19\ngpu_virt_addr=18\nbl_slot_index=17\n"
                   "compress_format=16\nhw_format=-15\nsegmentid=14\nat_type=13\npool_type=12\n"
                   "cache_type=11\ncpu_visible=10\ntile=9\nsize=8\nsecured=7\nbit_cnt=6\npitch=5\n"
                   "height=4\nwidth=-3\ndevice=2\nhandle=101\n"),
              expected);
}

TEST_F(AllocationText, WithoutLinesIsABlankRecord)
{
    EXPECT_EQ(read(""), blank());
}

TEST_F(AllocationText, WithoutAnEqualsSignIsABlankRecord)
{
    EXPECT_EQ(read("size\nsize 5\n\n\nwidth:7\n"), blank());
}

TEST_F(AllocationText, OfAnUnknownKeyIsIgnored)
{
    EXPECT_EQ(read("siz=1\nsizes=2\nSize=3\nname=4\n_size=5\nize=6\nhit_count=7\nsum_count=8\n"
                   "Size\t=9\nwidt=10\nwidthh=11\nheigh=12\nhandl=13\nhandles=14\ndevic=x\n"
                   "devices=x\n=15\n"),
              blank());
}

TEST_F(AllocationText, StandsBetweenLinesThatMeanNothing)
{
    Record expected = blank();
    expected.size = 5;
    expected.tile = 6;
    EXPECT_EQ(read("name=x\n\n=\n==\nsize=5\n======\n=size=7\nno sign\ntile=6\nlast=\n"), expected);
}

TEST_F(AllocationText, WithBlanksAroundTheSignIsIgnored)
{
    EXPECT_EQ(read("size = 100\nsize =100\n size=100\n\tsize=100\nhandle =10\ndevice =10\n"),
              blank());
}

TEST_F(AllocationText, OfAKeyMetTwiceCountsAtTheLastTime)
{
    Record expected = blank();
    expected.handle = 0x20;
    expected.device = 4;
    expected.size = 0;
    expected.width = 9;
    EXPECT_EQ(read("size=5\nhandle=10\ndevice=3\nwidth=8\nhandle=20\nwidth=9\ndevice=4\nsize=\n"),
              expected);
}

TEST_F(AllocationText, EndsAtTheFirstSignOfALine)
{
    Record expected = blank();
    expected.size = 5;
    EXPECT_EQ(read("size=5=6\nwidth==7\n"), expected);
}

TEST_F(AllocationText, WithoutAFinalNewlineLosesItsLastCharacter)
{
    EXPECT_EQ(read("size=123").size, 12);
    EXPECT_EQ(read("width=7\nsize=9").size, 0);
    EXPECT_EQ(read("width=7\nsize=9").width, 7);
    EXPECT_EQ(read("size=").size, 0);
    EXPECT_EQ(read("size=5\nsize=").size, 0);
    EXPECT_EQ(read("handle=1f").handle, 1);
    EXPECT_EQ(read("device=16").device, 1);
    EXPECT_EQ(read("size=5\nwidth").size, 5);
}

TEST_F(AllocationText, OfAHandleOfOneCharacterWithoutANewlineHasNoDigits)
{
    tree_.add("1", "handle=1");
    const ListedAs listed{{"1"}};
    Records list;
    EXPECT_THROW(get_current_allocation_data_try(list, 0, kVa), std::invalid_argument);
}

TEST_F(AllocationText, MayHaveCarriageReturns)
{
    Record expected = blank();
    expected.handle = 0x1f;
    expected.device = 16;
    expected.size = 100;
    EXPECT_EQ(read("handle=1f\r\ndevice=16\r\nsize=100\r\n\r\nwidth\r\n"), expected);
}

TEST_F(AllocationText, MayHaveNulBytes)
{
    Record expected = blank();
    expected.size = 12;
    expected.width = 7;
    EXPECT_EQ(read("size=12\0003\nsi\0ze=4\nheight\0=5\n\0\n\0tile=6\nwidth=7\n"s), expected);
}

TEST_F(AllocationText, BehindANulByteInALineIsStillThatLine)
{
    Record expected = blank();
    expected.width = 7;
    EXPECT_EQ(read("\0size=8\nnothing\0size=9\nwidth=7\n"s), expected);
}

TEST_F(AllocationText, OfTheDriversDeviceIsDecimalWithAVaDriverOnly)
{
    EXPECT_EQ(read("device=16\n", kVa).device, 16);
    EXPECT_EQ(read("device=16\n", kLegacy).device, 22);
    EXPECT_EQ(read("device=ff\n", kLegacy).device, 255);
    EXPECT_EQ(read("device=1f\n", kVa).device, 1);
}

TEST_F(AllocationText, IsThatOfAVaDriverForEveryFlagButZero)
{
    for (const std::int32_t flag : {2, -1, 256, std::numeric_limits<std::int32_t>::min(),
                                    std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(read("device=16\n", flag).device, 16) << flag;
    }
}

TEST_F(AllocationText, OfTheHandleIsHexadecimalWithEitherDriver)
{
    for (const std::int32_t flag : {kVa, kLegacy}) {
        EXPECT_EQ(read("handle=ffff\n", flag).handle, 65535);
        EXPECT_EQ(read("handle=10\n", flag).handle, 16);
    }
}

TEST_F(AllocationText, KeepsTheFieldsOfOneNodeFromTheNext)
{
    tree_.add("full", "handle=7\nsize=8\nshare=9\n");
    tree_.add("empty", "");
    Records list;
    const ListedAs listed{{"full", "empty", "full", "usual", "empty"}};
    EXPECT_EQ(get_current_allocation_data_try(list, 0, kVa), 0);
    Record full = blank();
    full.handle = 7;
    full.size = 8;
    full.share = 9;
    EXPECT_EQ(list, (Records{full, blank(), full, allocation(257), blank()}));
}

class AllocationField : public AllocationText, public testing::WithParamInterface<RecordField> {};

TEST_P(AllocationField, IsFilledByItsKeyAndNoOther)
{
    const std::string key = GetParam().name;
    EXPECT_EQ(read(key + "=7\n"), with(blank(), GetParam().member, 7));
    EXPECT_EQ(read(key + "=7\n", kLegacy), with(blank(), GetParam().member, 7));
}

TEST_P(AllocationField, HasNoValueOfALongerOrShorterKey)
{
    const std::string key = GetParam().name;
    const std::string text = key + "x=7\nx" + key + "=7\n" + key.substr(1) + "=7\n" +
                             key.substr(0, key.size() - 1) + "=7\n" + key + " =7\n";
    EXPECT_EQ(read(text), blank());
}

TEST_P(AllocationField, MayBeNegative)
{
    EXPECT_EQ(read(std::string{GetParam().name} + "=-7\n"), with(blank(), GetParam().member, -7));
}

INSTANTIATE_TEST_SUITE_P(, AllocationField, testing::ValuesIn(kAllocationKeys),
                         [](const testing::TestParamInfo<RecordField>& row) {
                             return std::string{row.param.name};
                         });

}  // namespace
}  // namespace nimba::test
