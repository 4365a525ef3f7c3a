// SPDX-License-Identifier: MIT
#include "machine.hpp"

#include <gtest/gtest.h>

namespace nimba::sim::test {
namespace {

TEST(PciAddress, IsReadAndWrittenAsTheKernelDoes)
{
    const auto address = parse_pci_address("00a1:B2:1f.7");
    ASSERT_TRUE(address.has_value());
    EXPECT_EQ(address->domain, 0xA1);
    EXPECT_EQ(address->bus, 0xB2);
    EXPECT_EQ(address->device, 0x1F);
    EXPECT_EQ(address->function, 7);
    EXPECT_EQ(to_text(*address), "00a1:b2:1f.7");
}

TEST(PciAddress, RefusesEveryOtherShape)
{
    for (const char* text : {"", "01:00.0", "0000:01:00", "0000:01:00.8", "0000:01:20.0",
                             "0000:1:00.0", "00000:01:00.0", "0000:01:00.0 ", "000g:01:00.0"}) {
        EXPECT_EQ(parse_pci_address(text), std::nullopt) << text;
    }
}

TEST(DrmDevice, NamesAndNumbersItsNodes)
{
    DrmDevice device;
    device.card = 3;
    device.render = 140;
    EXPECT_EQ(node_name(device, DrmNode::kPrimary), "card3");
    EXPECT_EQ(node_name(device, DrmNode::kControl), "controlD67");
    EXPECT_EQ(node_name(device, DrmNode::kRender), "renderD140");
    EXPECT_EQ(node_minor(device, DrmNode::kPrimary), 3);
    EXPECT_EQ(node_minor(device, DrmNode::kControl), 67);
    EXPECT_EQ(node_minor(device, DrmNode::kRender), 140);
}

}  // namespace
}  // namespace nimba::sim::test
