// SPDX-License-Identifier: MIT
// The blocks of an allocation's virtual-memory nodes, and the values in them.
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::test {
namespace {

using Blocks = std::vector<std::string>;
using namespace std::string_literals;

TEST(VmNodeBlocks, RunFromMarkerToMarkerAndToTheEnd)
{
    EXPECT_EQ(
        split_VmNode_Info("=====vm node info=====\ngpu_va = 1\n"
                          "=====vm node info=====\ngpu_va = 2\n"),
        (Blocks{"=====vm node info=====\ngpu_va = 1\n", "=====vm node info=====\ngpu_va = 2\n"}));
}

TEST(VmNodeBlocks, AreNoneWithoutAMarker)
{
    EXPECT_EQ(split_VmNode_Info(""), Blocks{});
    EXPECT_EQ(split_VmNode_Info("gpu_va = 1\nsize = 2\n"), Blocks{});
}

TEST(VmNodeBlocks, AreNoneForAMarkerThatDiffers)
{
    EXPECT_EQ(split_VmNode_Info("=====vm node info====\n====vm node info=====\n"), Blocks{});
    EXPECT_EQ(split_VmNode_Info("=====VM node info=====\n=====vm  node info=====\n"), Blocks{});
    EXPECT_EQ(split_VmNode_Info("=====vm node info===="), Blocks{});
}

TEST(VmNodeBlocks, DoNotHoldWhatStandsBeforeTheFirstMarker)
{
    EXPECT_EQ(split_VmNode_Info("gpu_va = 1\n=====vm node info=====\nsize = 2\n"),
              (Blocks{"=====vm node info=====\nsize = 2\n"}));
}

TEST(VmNodeBlocks, MayBeNoMoreThanTheMarker)
{
    EXPECT_EQ(split_VmNode_Info("=====vm node info====="), (Blocks{"=====vm node info====="}));
    EXPECT_EQ(split_VmNode_Info("=====vm node info==========vm node info====="),
              (Blocks{"=====vm node info=====", "=====vm node info====="}));
}

TEST(VmNodeBlocks, BeginWithAMarkerWithinALine)
{
    EXPECT_EQ(split_VmNode_Info("a =====vm node info=====b\nc=======vm node info=====d"),
              (Blocks{"=====vm node info=====b\nc==", "=====vm node info=====d"}));
}

TEST(VmNodeBlocks, DoNotBeginWithinAMarker)
{
    EXPECT_EQ(split_VmNode_Info("=====vm node info=====vm node info=====\n"),
              (Blocks{"=====vm node info=====vm node info=====\n"}));
}

TEST(VmNodeBlocks, MayHoldAnyBytes)
{
    EXPECT_EQ(split_VmNode_Info("=====vm node info=====\0\r\xff=====vm node info=====\0"s),
              (Blocks{"=====vm node info=====\0\r\xff"s, "=====vm node info=====\0"s}));
}

TEST(VmNodeBlocks, AreAsManyAsThereAreMarkers)
{
    std::string text;
    for (int block = 0; block < 5'000; ++block) {
        text += "=====vm node info=====\nx\n";
    }
    EXPECT_EQ(split_VmNode_Info(text), Blocks(5'000, "=====vm node info=====\nx\n"));
}

TEST(VmNodeValue, RunsToTheEndOfItsLine)
{
    constexpr const char* kBlock =
        "=====vm node info=====\n"
        "device_pid = 4711\n"
        "device_pname = some app\n"
        "gpu_va = 1f000\n"
        "size = 2000\n";
    EXPECT_EQ(extractValue(kBlock, "device_pid"), "4711");
    EXPECT_EQ(extractValue(kBlock, "device_pname"), "some app");
    EXPECT_EQ(extractValue(kBlock, "gpu_va"), "1f000");
    EXPECT_EQ(extractValue(kBlock, "size"), "2000");
}

TEST(VmNodeValue, RunsToTheEndOfTheTextWithoutANewline)
{
    EXPECT_EQ(extractValue("size = 2000", "size"), "2000");
}

TEST(VmNodeValue, IsEmptyWithoutItsKey)
{
    EXPECT_EQ(extractValue("", "size"), "");
    EXPECT_EQ(extractValue("Size = 2\nsiz = 3\ne = 4\n", "size"), "");
}

TEST(VmNodeValue, BelongsToTheFirstOccurrenceOfItsKey)
{
    EXPECT_EQ(extractValue("size = 1\nsize = 2\n", "size"), "1");
}

TEST(VmNodeValue, BelongsToALongerKeyThatStandsEarlier)
{
    EXPECT_EQ(extractValue("page_size = 1\nsize = 2\n", "size"), "1");
    EXPECT_EQ(extractValue("gpu_va_end = 3\ngpu_va = 4\n", "gpu_va"), "3");
    EXPECT_EQ(extractValue("name = size\nsize = 2\n", "size"), "");
}

TEST(VmNodeValue, KeepsBlanksAndLineEndsOtherThanTheNewline)
{
    EXPECT_EQ(extractValue("size =  \t2 \r\nnext", "size"), " \t2 \r");
}

TEST(VmNodeValue, BeginsTwoBytesBehindTheEqualsSignWhateverStandsThere)
{
    EXPECT_EQ(extractValue("size=2000\n", "size"), "000");
    EXPECT_EQ(extractValue("size \t = 2000\n", "size"), "2000");
    EXPECT_EQ(extractValue("size =  \n", "size"), " ");
    EXPECT_EQ(extractValue("size = = 1\n", "size"), "= 1");
}

TEST(VmNodeValue, IsEmptyWhenItsLineOrTheTextEndsFirst)
{
    EXPECT_EQ(extractValue("size = \nnext", "size"), "");
    EXPECT_EQ(extractValue("size =\nnext", "size"), "");
    EXPECT_EQ(extractValue("size = ", "size"), "");
    EXPECT_EQ(extractValue("size =", "size"), "");
}

TEST(VmNodeValue, IsEmptyWhenTheEqualsSignStandsInALaterLine)
{
    EXPECT_EQ(extractValue("size\ngpu_va = 1\n", "size"), "");
    EXPECT_EQ(extractValue("size\n=", "size"), "");
}

TEST(VmNodeValue, BeginsAtTheSecondByteWithoutAnEqualsSign)
{
    EXPECT_EQ(extractValue("size 2000", "size"), "ize 2000");
    EXPECT_EQ(extractValue("size 2000\nnext", "size"), "ize 2000");
    EXPECT_EQ(extractValue("gpu_va = 1\nsize 2000\nnext", "size"), "pu_va = 1\nsize 2000");
}

TEST(VmNodeValue, IsEmptyWithoutAnEqualsSignInATextOfOneByte)
{
    EXPECT_EQ(extractValue("s", "s"), "");
    EXPECT_EQ(extractValue("s\n", "s"), "");
}

TEST(VmNodeValue, MayHoldAnyBytes)
{
    EXPECT_EQ(extractValue("device_pname = a\0b\xff\n"s, "device_pname"), "a\0b\xff"s);
}

TEST(VmNodeValue, MayBeLong)
{
    const std::string long_value(100'000, 'v');
    EXPECT_EQ(extractValue("device_pname = " + long_value + "\nsize = 1\n", "device_pname"),
              long_value);
}

}  // namespace
}  // namespace nimba::test
