// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <fcntl.h>

#include <cstring>
#include <ostream>

namespace nimba::test {
namespace {

class ProductAdapters : public StubDiscoveryTest {};

TEST_F(ProductAdapters, FillsASlotAndItsExtendedIdentity)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3, {0x9a01, 0x1f, 0x0b, 0x02}, 71);
    discover_with();

    EXPECT_EQ(result_, 0);
    EXPECT_EQ(control_enable(), 1);
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(record_.header.chip_id[0], static_cast<unsigned>(DEVICE_ID_NIMBA_K3));
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:Nimba-GT-K3");
    EXPECT_EQ(record_.header.IS_VA_driver[0], 0);
    EXPECT_EQ(record_.header.drm_card_idx[0], 71);
    EXPECT_STREQ(record_.gpu_infos[0].busid, "9a01:1f:0b.2");
    EXPECT_LT(record_.gpu_infos[0].pci_dir_fd, 0);
    EXPECT_EQ(record_.gpu_infos[0].vendor_id, NIMBA_VENDOR_ID);

    EXPECT_EQ(cache().vendor_id[0], static_cast<unsigned>(NIMBA_VENDOR_ID));
    EXPECT_EQ(cache().busid_info[0].domain, 0x9a01);
    EXPECT_EQ(cache().busid_info[0].bus, 0x1f);
    EXPECT_EQ(cache().busid_info[0].device, 0x0b);
    EXPECT_EQ(cache().busid_info[0].function, 0x02);
    EXPECT_EQ(cache().luid[0].low, 0x9a01U);
    EXPECT_EQ(cache().luid[0].high, 0x1f0b02U);
    EXPECT_EQ(cache().other_vendor_chip_num, 0);
}

TEST_F(ProductAdapters, LogsEachStepInOrder)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3, {0x9a01, 0x1f, 0x0b, 0x02}, 71);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M30, {0, 3, 0, 0}, 72);
    discover_with();
    EXPECT_EQ(messages_, (Texts{
                             check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3),
                             "find chip nimbak3\n",
                             "drm_card_idx: 71\n",
                             "gpu_busid: 0x9a01:1f:0b.2\n",
                             "gpu_luid: 0x00009a01:0x001f0b02\n",
                             "find_adapter->header.IS_VA_driver[0] = 0\n",
                             check_line(QV_VENDOR_ID, DEVICE_ID_QV_M30),
                             "find chip mv9\n",
                             "drm_card_idx: 72\n",
                             "gpu_busid: 0x0000:03:00.0\n",
                             "gpu_luid: 0x00000000:0x00030000\n",
                             "find_adapter->header.IS_VA_driver[1] = 0\n",
                             "find chip num:2, other vendor chip num:0\n",
                         }));
    EXPECT_EQ(output_, "");
}

TEST_F(ProductAdapters, WritesTheFunctionInDecimalInTheBusIdAndInHexadecimalInTheMessage)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K6, {0xffff, 0xff, 0xff, 0xff}, 71);
    discover_with();
    EXPECT_STREQ(record_.gpu_infos[0].busid, "ffff:ff:ff.255");
    EXPECT_EQ(messages_.at(3), "gpu_busid: 0xffff:ff:ff.ff\n");
    EXPECT_EQ(messages_.at(4), "gpu_luid: 0x0000ffff:0x00ffffff\n");
}

TEST_F(ProductAdapters, LeavesEveryFieldThatItCannotFillAsItWas)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 4, 5, 6}, 71);
    record_ = patterned_record();
    record_.header.vendor_id_filter = 0xFFFF;
    find_adapter expected = record_;
    discover_with();

    EXPECT_LT(record_.gpu_infos[0].pci_dir_fd, 0);
    record_.gpu_infos[0].pci_dir_fd = -1;
    ASSERT_EQ(opened_.size(), 1U);
    expected.header.chip_num = 1;
    expected.header.chip_id[0] = DEVICE_ID_NIMBA_K1;
    std::strcpy(expected.header.chip_name[0], "Gpu0:Nimba-K1");
    expected.header.drm_fd[0] = opened_.begin()->first;
    expected.header.drm_card_idx[0] = 71;
    std::strcpy(expected.gpu_infos[0].busid, "9a01:04:05.6");
    expected.gpu_infos[0].pci_dir_fd = -1;
    expected.gpu_infos[0].vendor_id = NIMBA_VENDOR_ID;
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));
}

TEST_F(ProductAdapters, LeavesTheCardNumberOfAPrimaryPathWithoutOneAsItWas)
{
    devices_.plug(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2, {0x9a01, 1, 0, 0},
                  {devices_.node("card5"), "", ""});
    record_.header.drm_card_idx[0] = 9;
    discover_with();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(record_.header.drm_card_idx[0], 9);
    EXPECT_EQ(messages_.at(2), "drm_card_idx: 9\n");
}

TEST_F(ProductAdapters, FillsThreeSlots)
{
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M20, {0x9a01, 1, 0, 0}, 73);
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3T, {0x9a01, 2, 0, 0}, 72);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M20, {0x9a01, 3, 0, 0}, 71);
    discover_with();
    EXPECT_EQ(record_.header.chip_num, 3);
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:QV M-20");
    EXPECT_STREQ(record_.header.chip_name[1], "Gpu1:Nimba-GT-K3t");
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:QV M-20");
    EXPECT_EQ(record_.header.drm_card_idx[0], 73);
    EXPECT_EQ(record_.header.drm_card_idx[1], 72);
    EXPECT_EQ(record_.header.drm_card_idx[2], 71);
    EXPECT_EQ(cache().vendor_id[2], static_cast<unsigned>(QV_VENDOR_ID));
    EXPECT_EQ(opened_, (OpenFiles{{record_.header.drm_fd[0], devices_.render_node(73)},
                                  {record_.header.drm_fd[1], devices_.render_node(72)},
                                  {record_.header.drm_fd[2], devices_.render_node(71)}}));
    EXPECT_EQ(messages_.back(), "find chip num:3, other vendor chip num:0\n");
    EXPECT_EQ(output_, "");
    EXPECT_EQ(stub_->live_versions, 0);
    EXPECT_EQ(stub_->wrong_frees, 0);
}

TEST_F(ProductAdapters, SkipsADeviceWithoutAVersionSilently)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2, {0x9a01, 2, 0, 0}, 72);
    use_stub();
    const std::string mute = devices_.render_node(71);
    stub_->mute_nodes[0] = mute.c_str();
    discover();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:NimbaK2");
    EXPECT_EQ(messages_.front(), check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K2));
    EXPECT_EQ(cache().vendor_id[1], 0U);
    EXPECT_EQ(opened_, (OpenFiles{{record_.header.drm_fd[0], devices_.render_node(72)}}));
}

struct Bus {
    int type;
    const char* name;
};

void PrintTo(const Bus& row, std::ostream* out)
{
    *out << row.name;
}

class ProductAdaptersOnOtherBuses : public ProductAdapters,
                                    public testing::WithParamInterface<Bus> {};

TEST_P(ProductAdaptersOnOtherBuses, AreSkippedInBothPasses)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71).bustype =
        GetParam().type;
    devices_.plug_card(0x10de, 0x2204, {0x9a01, 2, 0, 0}, 72).bustype = GetParam().type;
    discover_with();
    EXPECT_EQ(control_enable(), 1);
    EXPECT_EQ(record_.header.chip_num, 0);
    EXPECT_EQ(cache().other_vendor_chip_num, 0);
    EXPECT_EQ(messages_, Texts{"find chip num:0, other vendor chip num:0\n"});
    EXPECT_EQ(stub_->asked_versions, 0);
    EXPECT_EQ(opened_, OpenFiles{});
    EXPECT_EQ(stub_->freed_devices, 2);
}

INSTANTIATE_TEST_SUITE_P(, ProductAdaptersOnOtherBuses,
                         testing::Values(Bus{DRM_BUS_USB, "Usb"}, Bus{DRM_BUS_PLATFORM, "Platform"},
                                         Bus{DRM_BUS_HOST1X, "Host1x"}),
                         [](const testing::TestParamInfo<Bus>& row) { return row.param.name; });

TEST_F(ProductAdapters, LeaveTheVendorOfAnUnknownChipInTheCacheAndItsClosedDescriptorInTheSlot)
{
    devices_.plug_card(QV_VENDOR_ID, 0x7777, {0x9a01, 1, 2, 3}, 71);
    record_ = patterned_record();
    record_.header.vendor_id_filter = 0xFFFF;
    find_adapter expected = record_;
    discover_with();

    expected.header.chip_num = 0;
    expected.header.drm_fd[0] = record_.header.drm_fd[0];
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));
    EXPECT_GT(record_.header.drm_fd[0], 2);
    EXPECT_LT(::fcntl(record_.header.drm_fd[0], F_GETFD), 0);
    EXPECT_EQ(cache().vendor_id[0], static_cast<unsigned>(QV_VENDOR_ID));
    EXPECT_EQ(cache().busid_info[0].domain, 0);
    EXPECT_EQ(cache().luid[0].low, 0U);
    EXPECT_EQ(messages_, (Texts{check_line(QV_VENDOR_ID, 0x7777),
                                "find chip num:0, other vendor chip num:0\n"}));
    EXPECT_EQ(opened_, OpenFiles{});
    EXPECT_EQ(stub_->live_versions, 0);
}

TEST_F(ProductAdapters, TakeTheSlotOfAnUnknownChipBeforeThem)
{
    devices_.plug_card(QV_VENDOR_ID, 0x7777, {0x9a01, 1, 2, 3}, 71);
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a02, 4, 5, 6}, 72);
    devices_.plug_card(QV_VENDOR_ID, 0x8888, {0x9a03, 7, 8, 9}, 73);
    discover_with();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:Nimba-K1");
    EXPECT_EQ(cache().vendor_id[0], static_cast<unsigned>(NIMBA_VENDOR_ID));
    EXPECT_EQ(cache().vendor_id[1], static_cast<unsigned>(QV_VENDOR_ID));
    EXPECT_EQ(cache().luid[0].low, 0x9a02U);
    EXPECT_EQ(cache().luid[1].low, 0U);
    EXPECT_EQ(opened_, (OpenFiles{{record_.header.drm_fd[0], devices_.render_node(72)}}));
}

TEST_F(ProductAdapters, DoNotPassAsEachOther)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_QV_M30, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 2, 0, 0}, 72);
    discover_with();
    EXPECT_EQ(record_.header.chip_num, 0);
    EXPECT_EQ(messages_, (Texts{check_line(NIMBA_VENDOR_ID, DEVICE_ID_QV_M30),
                                check_line(QV_VENDOR_ID, DEVICE_ID_NIMBA_K1),
                                "find chip num:0, other vendor chip num:0\n"}));
}

TEST_F(ProductAdapters, AreOpenedAnewByASecondDiscovery)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
    discover_with();
    const int first = record_.header.drm_fd[0];
    discover();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_NE(record_.header.drm_fd[0], first);
    EXPECT_GE(::fcntl(first, F_GETFD), 0);
    EXPECT_GE(::fcntl(record_.header.drm_fd[0], F_GETFD), 0);
}

}  // namespace
}  // namespace nimba::test
