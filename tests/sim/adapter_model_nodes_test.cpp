// SPDX-License-Identifier: MIT
// The nodes of an adapter's driver, and the texts of those that nobody can write.
#include "model_of.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

std::vector<std::string> names(const AdapterModel& model, NodeDirectory directory, mode_t mode)
{
    std::vector<std::string> names;
    for (const ModelNode& node : model.nodes(directory)) {
        if (node.mode == mode) {
            names.push_back(node.name);
        }
    }
    return names;
}

using Names = std::vector<std::string>;

TEST(AdapterModelNodes, CanBeWrittenWhereThereAreCommands)
{
    const AdapterModel model = model_of("");
    EXPECT_EQ(names(model, NodeDirectory::kInfo, 0644),
              (Names{"enable_perf", "enable_usage", "misc_ctl_flag", "power_mode", "pwm_wait_count",
                     "dvfs_mode", "dvfs_control_params", "dvfs_clk_voltage", "dvfs_level"}));
}

TEST(AdapterModelNodes, OnlyShowAllElse)
{
    const AdapterModel model = model_of("");
    EXPECT_EQ(model.nodes(NodeDirectory::kInfo).size(), 30U);
    EXPECT_EQ(names(model, NodeDirectory::kInfo, 0444), (Names{"engine_3d_usage",
                                                               "engine_vcp_usage",
                                                               "engine_vcp_info",
                                                               "engine_vpp_usage",
                                                               "fan_speed",
                                                               "vbios_version",
                                                               "pmp_version",
                                                               "release_date",
                                                               "driver_version",
                                                               "miu_channel_num",
                                                               "slice_mask",
                                                               "fb_size",
                                                               "free_fb_mem",
                                                               "eclk",
                                                               "vclk",
                                                               "mclk",
                                                               "fps_count",
                                                               "rxa_blt_scn_cnt",
                                                               "power_case",
                                                               "coreclk",
                                                               "segment_info"}));
    EXPECT_EQ(names(model, NodeDirectory::kHwmon, 0444),
              (Names{"name", "temp1_input", "fan0_input", "fan1_input"}));
    EXPECT_EQ(model.nodes(NodeDirectory::kHwmon).size(), 4U);
    EXPECT_EQ(names(model, NodeDirectory::kProc, 0444), Names{""});
    EXPECT_TRUE(model.nodes(NodeDirectory::kDebug).empty());
}

TEST(AdapterModelNodes, OfAQvChipAreHeapsInsteadOfSegments)
{
    const AdapterModel model = model_of("", "qv-m40");
    EXPECT_EQ(model.nodes(NodeDirectory::kInfo).size(), 29U);
    EXPECT_EQ(info(model, "segment_info"), "(no node)");
    EXPECT_EQ(info(model, "coreclk"), "600\n");
    EXPECT_EQ(hwmon(model, "name"), "qv\n");
    EXPECT_EQ(names(model, NodeDirectory::kDebug, 0444),
              (Names{"heaps/heap_invalid/info", "heaps/heap_local/info",
                     "heaps/heap_pcie_unsnoop/info", "heaps/heap_pcie_snoop/info"}));
}

TEST(AdapterModelNodes, AreNotThereByOtherNames)
{
    const AdapterModel model = model_of("");
    for (const auto directory : {NodeDirectory::kDebug, NodeDirectory::kInfo, NodeDirectory::kHwmon,
                                 NodeDirectory::kProc}) {
        EXPECT_EQ(model.read(directory, "none"), std::nullopt);
    }
    EXPECT_EQ(model.read(NodeDirectory::kDebug, "heaps/heap_local/info"), std::nullopt);
    EXPECT_EQ(model_of("", "qv-m30").read(NodeDirectory::kDebug, "heaps/heap_local"), std::nullopt);
}

TEST(AdapterModelNodes, TellOfTheBoard)
{
    const AdapterModel model = model_of("");
    for (const auto& [node, text] :
         std::map<std::string, std::string>{{"vbios_version", "8.f.0.1c\n"},
                                            {"pmp_version", "3\n"},
                                            {"release_date", "20240315\n"},
                                            {"driver_version", "1.2.a\n"},
                                            {"miu_channel_num", "2\n"},
                                            {"slice_mask", "3\n"},
                                            {"engine_vcp_info", "2\n"},
                                            {"power_case", "0\n"}}) {
        EXPECT_EQ(info(model, node), text) << node;
    }
    EXPECT_EQ(hwmon(model, "name"), "jw\n");
}

TEST(AdapterModelSegments, AreShownInUnitsOf1000Bytes)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(info(model, "segment_info"),
              "segment_id:0,total_size:4294967,used_size:268435\n"
              "segment_id:1,total_size:2147483,used_size:33554\n"
              "segment_id:2,total_size:1073741,used_size:0\n");
    EXPECT_EQ(info(model, "fb_size"), "4096\n");
    EXPECT_EQ(info(model, "free_fb_mem"), "3840\n");
}

TEST(AdapterModelSegments, HoldTheAllocationsAsFarAsTheyFit)
{
    AdapterModel model = model_of(
        "[[adapter.segment]]\ntotal = 10485760\nused = 1048576\n"
        "[[adapter.segment]]\nid = 3\ntotal = 5000\n");
    model.set_used(0, 2097152);
    model.set_used(2, 1000000);
    model.set_used(3, 4000);
    model.set_used(16, 1000000);
    EXPECT_EQ(info(model, "segment_info"),
              "segment_id:0,total_size:10485,used_size:3145\n"
              "segment_id:3,total_size:5,used_size:4\n");
    EXPECT_EQ(info(model, "fb_size"), "10\n");
    EXPECT_EQ(info(model, "free_fb_mem"), "7\n");
    model.set_used(0, 18446744073709551615U);
    model.set_used(3, 0);
    EXPECT_EQ(info(model, "segment_info"),
              "segment_id:0,total_size:10485,used_size:10485\n"
              "segment_id:3,total_size:5,used_size:0\n");
    EXPECT_EQ(info(model, "free_fb_mem"), "0\n");
}

TEST(AdapterModelSegments, CanBeNone)
{
    const AdapterModel model = model_of("segment = []\n");
    EXPECT_EQ(info(model, "segment_info"), "");
    EXPECT_EQ(info(model, "fb_size"), "0\n");
    EXPECT_EQ(info(model, "free_fb_mem"), "0\n");
    EXPECT_NE(model.read(NodeDirectory::kProc, "")->find("GPU Memory Usage : 0\n"),
              std::string::npos);
}

TEST(AdapterModelHeaps, AreShownInBytes)
{
    const AdapterModel model = model_of("", "qv-m30");
    const auto heap = [&](const std::string& name) {
        return model.read(NodeDirectory::kDebug, "heaps/" + name + "/info");
    };
    EXPECT_EQ(heap("heap_invalid"), "Total segment size:  0\nKMD used segment memory:  0\n");
    EXPECT_EQ(heap("heap_local"),
              "Total segment size:  2147483648\nKMD used segment memory:  67108864\n");
    EXPECT_EQ(heap("heap_pcie_unsnoop"),
              "Total segment size:  1073741824\nKMD used segment memory:  16777216\n");
    EXPECT_EQ(heap("heap_pcie_snoop"),
              "Total segment size:  1073741824\nKMD used segment memory:  0\n");
    EXPECT_EQ(info(model, "fb_size"), "2048\n");
}

TEST(AdapterModelHeaps, TellWhatTheDriverUsesBesideTheAllocations)
{
    AdapterModel model =
        model_of("[[adapter.segment]]\nid = 1\ntotal = 10485760\nused = 1048576\n", "qv-m30");
    model.set_used(1, 2097152);
    EXPECT_EQ(model.read(NodeDirectory::kDebug, "heaps/heap_local/info"),
              "Total segment size:  10485760\nKMD used segment memory:  1048576\n");
    EXPECT_EQ(info(model, "fb_size"), "10\n");
    EXPECT_EQ(info(model, "free_fb_mem"), "7\n");
}

TEST(AdapterModelHeaps, AreThoseOfTheMachineFile)
{
    const AdapterModel model =
        model_of("[[adapter.segment]]\nid = 3\ntotal = 4294967297\nused = 9\n", "qv-m20");
    EXPECT_EQ(names(model, NodeDirectory::kDebug, 0444), Names{"heaps/heap_pcie_snoop/info"});
    EXPECT_EQ(model.read(NodeDirectory::kDebug, "heaps/heap_pcie_snoop/info"),
              "Total segment size:  4294967297\nKMD used segment memory:  9\n");
    EXPECT_EQ(model.read(NodeDirectory::kDebug, "heaps/heap_local/info"), std::nullopt);
}

TEST(AdapterModelProcText, TellsWhatTheOtherNodesTell)
{
    AdapterModel model = model_of("");
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    EXPECT_EQ(model.read(NodeDirectory::kProc, ""),
              "Device ID : 1005\n"
              "Driver Version : 1.2.a\n"
              "Firmware Version : 8.f.0.1c\n"
              "Firmware Name : Simulated adapter\n"
              "Bus Type : PCIE4.0 x8\n"
              "Max Display Port : 3\n"
              "Support Display Type : VGA HDMI DP\n"
              "Pixel Fillrate : 9600\n"
              "Texture Fillrate : 19200\n"
              "Memory Clock Freq : 880\n"
              "HDMI Max Display Resolution : 3840 x 2160@60\n"
              "DP Max Display Resolution : 7680 x 4320@30\n"
              "VGA Max Display Resolution : 1920 x 1080@75\n"
              "GPU Memory Usage : 6\n"
              "GPU Use Rate(3d) : 40\n"
              "GPU Use Rate(video) : 20\n"
              "GPU Use Rate(vpp) : 10\n"
              "Realtime Temperature : 45\n");
}

TEST(AdapterModelProcText, HasTheLinesOfWhatTheBoardHas)
{
    const AdapterModel model = model_of(
        "[adapter.board]\ndriver_version = \"\"\nfirmware_version = \"1.2.3.4\"\n"
        "firmware_name = \"\"\nhdmi_resolution = \"\"\ndp_resolution = \"1 x 2@3\"\n"
        "vga_resolution = \"\"\ndisplay_ports = 0\npixel_fillrate = 5\ntexture_fillrate = 6\n"
        "pcie_gen = 3\npcie_lanes = 16\n");
    const std::string text = model.read(NodeDirectory::kProc, "").value();
    EXPECT_EQ(text.substr(text.find('\n') + 1),
              "Firmware Version : 1.2.3.4\n"
              "Bus Type : PCIE3.0 x16\n"
              "Pixel Fillrate : 5\n"
              "Texture Fillrate : 6\n"
              "Memory Clock Freq : 880\n"
              "DP Max Display Resolution : 1 x 2@3\n"
              "GPU Memory Usage : 6\n"
              "GPU Use Rate(3d) : 0\n"
              "GPU Use Rate(video) : 0\n"
              "GPU Use Rate(vpp) : 0\n"
              "Realtime Temperature : 45\n");
}

TEST(AdapterModelProcText, HasADisplayTypeLineOfItsOwn)
{
    const AdapterModel model =
        model_of("[adapter.board]\ndisplay_ports = 18\ndisplay_types = \"EDP\"\n");
    EXPECT_NE(model.read(NodeDirectory::kProc, "")
                  ->find("\nMax Display Port : 12\nSupport Display Type : EDP\n"),
              std::string::npos);
}

TEST(AdapterModelProcText, MovesWithTheAdapter)
{
    AdapterModel model = model_of("");
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    model.set_used(0, 1879048192);
    model.advance_to(std::chrono::seconds{5});
    const std::string text = model.read(NodeDirectory::kProc, "").value();
    for (const char* line :
         {"\nMemory Clock Freq : 1240\n", "\nGPU Memory Usage : 50\n", "\nGPU Use Rate(3d) : 70\n",
          "\nGPU Use Rate(video) : 35\n", "\nRealtime Temperature : 48\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
}

}  // namespace
}  // namespace nimba::sim::test
