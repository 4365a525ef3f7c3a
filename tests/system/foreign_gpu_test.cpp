// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <cstring>
#include <ostream>

namespace nimba::test {
namespace {

struct Vendor {
    std::uint16_t id;
    const char* chip_name;
    const char* message;
    const char* name;
};

void PrintTo(const Vendor& row, std::ostream* out)
{
    *out << row.name;
}

class ForeignGpu : public StubDiscoveryTest {};
class ForeignGpuOf : public ForeignGpu, public testing::WithParamInterface<Vendor> {};

TEST_P(ForeignGpuOf, ThisVendorIsNotedInSlot2)
{
    devices_.plug_card(GetParam().id, 0xbeef, {0x9a02, 0xc3, 0x05, 0x01}, 75);
    record_ = patterned_record();
    record_.header.vendor_id_filter = 0xFFFF;
    find_adapter expected = record_;
    discover_with();

    expected.header.chip_num = 0;
    expected.header.chip_id[2] = 0xbeef;
    std::strcpy(expected.header.chip_name[2], GetParam().chip_name);
    expected.header.drm_card_idx[2] = 75;
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));

    EXPECT_EQ(cache().other_vendor_chip_num, 1);
    EXPECT_EQ(cache().vendor_id[0], 0U);
    EXPECT_EQ(cache().vendor_id[2], GetParam().id);
    EXPECT_EQ(cache().busid_info[2].domain, 0x9a02);
    EXPECT_EQ(cache().busid_info[2].bus, 0xc3);
    EXPECT_EQ(cache().busid_info[2].device, 0x05);
    EXPECT_EQ(cache().busid_info[2].function, 0x01);
    EXPECT_EQ(cache().luid[2].low, 0x9a02U);
    EXPECT_EQ(cache().luid[2].high, 0xc30501U);

    EXPECT_EQ(messages_, (Texts{GetParam().message, "gpu_busid: 0x9a02:c3:05.1\n",
                                "gpu_luid: 0x00009a02:0x00c30501\n",
                                "find chip num:0, other vendor chip num:1\n"}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(control_enable(), 1);
    // Its descriptor stays open, in nobody's hands.
    ASSERT_EQ(opened_.size(), 1U);
    EXPECT_EQ(opened_.begin()->second, devices_.render_node(75));
    EXPECT_TRUE(closes_on_exec(opened_.begin()->first));
    EXPECT_EQ(stub_->live_versions, 0);
    EXPECT_EQ(stub_->freed_devices, 1);
}

INSTANTIATE_TEST_SUITE_P(
    , ForeignGpuOf,
    testing::Values(Vendor{0x10DE, "Gpu2:Nvidia-GPU", "find chip nvidia\n", "Nvidia"},
                    Vendor{0x8086, "Gpu2:Intel-GPU", "find chip intel\n", "Intel"},
                    Vendor{0x1002, "Gpu2:Amd-GPU", "find chip amd\n", "Amd"},
                    Vendor{0x1AF4, "Gpu2:Unknown-GPU",
                           "find chip unknown, verdor i:0x1af4, device id 0xbeef\n", "Unknown"}),
    [](const testing::TestParamInfo<Vendor>& row) { return row.param.name; });

TEST_F(ForeignGpu, BesideAnAdapterLeavesTheAdaptersSlotAlone)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K5, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(0x10de, 0x2204, {0x9a02, 2, 0, 0}, 72);
    discover_with();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:NimbaK5");
    EXPECT_EQ(record_.header.chip_id[1], 0U);
    EXPECT_STREQ(record_.header.chip_name[1], "");
    EXPECT_EQ(record_.header.chip_id[2], 0x2204U);
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Nvidia-GPU");
    EXPECT_EQ(record_.header.drm_card_idx[2], 72);
    EXPECT_EQ(record_.header.drm_fd[2], 0);
    EXPECT_STREQ(record_.gpu_infos[2].busid, "");
    EXPECT_EQ(cache().other_vendor_chip_num, 1);
    EXPECT_EQ(messages_, (Texts{
                             check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K5),
                             "find chip nimbak5\n",
                             "drm_card_idx: 71\n",
                             "gpu_busid: 0x9a01:01:00.0\n",
                             "gpu_luid: 0x00009a01:0x00010000\n",
                             "find_adapter->header.IS_VA_driver[0] = 0\n",
                             "find chip nvidia\n",
                             "gpu_busid: 0x9a02:02:00.0\n",
                             "gpu_luid: 0x00009a02:0x00020000\n",
                             "find chip num:1, other vendor chip num:1\n",
                         }));
}

TEST_F(ForeignGpu, InFrontOfAdaptersIsNotedBehindThem)
{
    devices_.plug_card(0x1002, 0x744c, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M30, {0x9a02, 2, 0, 0}, 72);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M40, {0x9a03, 3, 0, 0}, 73);
    discover_with();
    EXPECT_EQ(record_.header.chip_num, 2);
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:QV M-30");
    EXPECT_STREQ(record_.header.chip_name[1], "Gpu1:QV M-40");
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Amd-GPU");
    EXPECT_EQ(messages_.at(0), check_line(QV_VENDOR_ID, DEVICE_ID_QV_M30));
    EXPECT_EQ(messages_.at(12), "find chip amd\n");
    EXPECT_EQ(messages_.back(), "find chip num:2, other vendor chip num:1\n");
}

TEST_F(ForeignGpu, TakenIsTheFirstOnly)
{
    devices_.plug_card(0x8086, 0x56a0, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(0x10de, 0x2204, {0x9a02, 2, 0, 0}, 72);
    discover_with();
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Intel-GPU");
    EXPECT_EQ(cache().vendor_id[2], 0x8086U);
    EXPECT_EQ(cache().other_vendor_chip_num, 1);
    ASSERT_EQ(opened_.size(), 1U);
    EXPECT_EQ(opened_.begin()->second, devices_.render_node(71));
    EXPECT_EQ(stub_->asked_versions, 1);
}

TEST_F(ForeignGpu, TakenIsTheFirstThatHasAVersion)
{
    devices_.plug_card(0x8086, 0x56a0, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(0x10de, 0x2204, {0x9a02, 2, 0, 0}, 72);
    use_stub();
    const std::string mute = devices_.render_node(71);
    stub_->mute_nodes[0] = mute.c_str();
    discover();
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Nvidia-GPU");
    ASSERT_EQ(opened_.size(), 1U);
    EXPECT_EQ(opened_.begin()->second, devices_.render_node(72));
}

TEST_F(ForeignGpu, WithoutAVersionIsNotNoted)
{
    devices_.plug_card(0x8086, 0x56a0, {0x9a01, 1, 0, 0}, 71);
    use_stub();
    const std::string mute = devices_.render_node(71);
    stub_->mute_nodes[0] = mute.c_str();
    discover();
    EXPECT_EQ(control_enable(), 1);
    EXPECT_EQ(record_.header.chip_id[2], 0U);
    EXPECT_EQ(cache().other_vendor_chip_num, 0);
    EXPECT_EQ(messages_, Texts{"find chip num:0, other vendor chip num:0\n"});
    EXPECT_EQ(opened_, OpenFiles{});
}

TEST_F(ForeignGpu, KeepsItsSlotsCardNumberWhenThePrimaryPathHasNone)
{
    devices_.plug(0x8086, 0x56a0, {0x9a01, 1, 0, 0}, {"", "", devices_.node("renderD128")});
    record_.header.drm_card_idx[2] = 9;
    discover_with();
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Intel-GPU");
    EXPECT_EQ(record_.header.drm_card_idx[2], 9);
}

TEST_F(ForeignGpu, IsNeverAnUnknownChipOfTheProductsVendors)
{
    devices_.plug_card(QV_VENDOR_ID, 0x7777, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(NIMBA_VENDOR_ID, 0x7777, {0x9a01, 2, 0, 0}, 72);
    discover_with();
    EXPECT_EQ(cache().other_vendor_chip_num, 0);
    EXPECT_EQ(record_.header.chip_id[2], 0U);
    EXPECT_EQ(messages_.back(), "find chip num:0, other vendor chip num:0\n");
}

TEST_F(ForeignGpu, StaysCountedWhenALaterDiscoveryFindsNone)
{
    devices_.plug_card(0x8086, 0x56a0, {0x9a01, 1, 0, 0}, 71);
    discover_with();
    stub_->devices[0]->deviceinfo.pci->vendor_id = NIMBA_VENDOR_ID;
    stub_->devices[0]->deviceinfo.pci->device_id = DEVICE_ID_NIMBA_K1;
    discover();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(cache().other_vendor_chip_num, 1);
    EXPECT_EQ(cache().vendor_id[0], static_cast<unsigned>(NIMBA_VENDOR_ID));
    EXPECT_EQ(cache().vendor_id[2], 0x8086U);
    EXPECT_EQ(messages_.back(), "find chip num:1, other vendor chip num:1\n");
}

TEST_F(ForeignGpu, OverwritesTheThirdAdaptersPartOfSlot2)
{
    for (std::uint8_t i = 0; i < 3; ++i) {
        devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M20, {0x9a01, i, 0, 0}, 71 + i);
    }
    discover_with();
    ASSERT_EQ(record_.header.chip_num, 3);
    const int third_fd = record_.header.drm_fd[2];
    stub_->devices[0]->deviceinfo.pci->vendor_id = 0x10de;
    stub_->devices[0]->deviceinfo.pci->device_id = 0x2204;
    discover();
    EXPECT_EQ(record_.header.chip_num, 2);
    EXPECT_EQ(record_.header.chip_id[2], 0x2204U);
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Nvidia-GPU");
    EXPECT_EQ(record_.header.drm_card_idx[2], 71);
    EXPECT_EQ(cache().vendor_id[2], 0x10deU);
    EXPECT_EQ(cache().luid[2].high, 0U);
    EXPECT_EQ(record_.header.drm_fd[2], third_fd);
    EXPECT_STREQ(record_.gpu_infos[2].busid, "9a01:02:00.0");
    EXPECT_EQ(record_.gpu_infos[2].vendor_id, QV_VENDOR_ID);
}

}  // namespace
}  // namespace nimba::test
