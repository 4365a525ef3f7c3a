// SPDX-License-Identifier: MIT
#include "adapter_states.hpp"
#include "tools/smi/info/render.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

AdapterState workstation_adapter()
{
    AdapterState state;
    state.adapter = {1, "0000:02:00.0", "Gpu1:QV M-40"};
    state.there = true;
    state.summary.adapter = Adapter{1,      "Gpu1:QV M-40", "0000:02:00.0",      2,
                                    0x5156, 0x2040,         DriverKind::kLegacy, {0, 0x20000}};
    state.summary.memory_data_rate = 4800;
    state.summary.display_types = 1;
    state.summary.memory_type = 5;
    state.summary.memory_bit_width = 128;
    state.summary.max_resolution_vga = 0x0780'0438'0000'004B;
    return state;
}

TEST(InfoText, ShowsEveryFieldWithItsUnitAndItsSource)
{
    EXPECT_EQ(
        info_text(snapshot_of({busy_adapter()})),
        "Slot 0: Gpu0:Nimba-K6, 0000:01:00.0\n"
        "FIELD                   VALUE             UNIT        SOURCE\n"
        "engine_clock            550               driver's    jw_info/eclk\n"
        "video_clock             350               driver's    jw_info/vclk\n"
        "memory_clock            1000              driver's    jw_info/mclk\n"
        "frame_buffer_size       8192              driver's    jw_info/fb_size\n"
        "memory_data_rate        2000              driver's    jw_info/mclk, twice\n"
        "core_clock              600               driver's    jw_info/coreclk\n"
        "display_ports           3                 -           /proc/gpuinfo_1: Max Display Port\n"
        "display_types           HDMI, DP          -           /proc/gpuinfo_1: Support Display "
        "Type\n"
        "memory_channels         4                 -           jw_info/miu_channel_num\n"
        "pcie_lanes              16                lanes       current_link_width\n"
        "memory_ddr_generation   n/a               -           dmidecode\n"
        "memory_width_bits       n/a               bits        dmidecode\n"
        "driver_version          1.2.a             -           /proc/gpuinfo_1: Driver Version\n"
        "firmware_version        8.f.0.1c          -           /proc/gpuinfo_1: Firmware Version\n"
        "firmware_name           K6 desktop board  -           /proc/gpuinfo_1: Firmware Name\n"
        "pixel_fillrate          57600             driver's    /proc/gpuinfo_1: Pixel Fillrate\n"
        "texture_fillrate        115200            driver's    /proc/gpuinfo_1: Texture Fillrate\n"
        "memory_clock_freq       1000              driver's    /proc/gpuinfo_1: Memory Clock "
        "Freq\n"
        "max_resolution_hdmi_dp  3840x2160@60      pixels, Hz  /proc/gpuinfo_1: HDMI Max Display "
        "Resolution, or DP\n"
        "max_resolution_vga      n/a               pixels, Hz  /proc/gpuinfo_1: VGA Max Display "
        "Resolution\n"
        "memory_usage            37                driver's    /proc/gpuinfo_1: GPU Memory Usage\n"
        "use_rate_3d             0                 driver's    /proc/gpuinfo_1: GPU Use Rate(3d)\n"
        "use_rate_video          30                driver's    /proc/gpuinfo_1: GPU Use "
        "Rate(video)\n"
        "use_rate_vpp            15                driver's    /proc/gpuinfo_1: GPU Use "
        "Rate(vpp)\n"
        "realtime_temperature    71                driver's    /proc/gpuinfo_1: Realtime "
        "Temperature\n"
        "pcie_generation         4                 -           /proc/gpuinfo_1: Bus Type\n"
        "engine_vcp_info         2                 driver's    jw_info/engine_vcp_info\n"
        "vbios_version_number    8                 driver's    jw_info/vbios_version\n"
        "pmp_version_number      3                 driver's    jw_info/pmp_version\n"
        "release_date_number     20240315          driver's    jw_info/release_date\n"
        "driver_version_number   1                 driver's    jw_info/driver_version\n"
        "slice_mask              7                 driver's    jw_info/slice_mask\n"
        "frame_buffer_free       4096              driver's    jw_info/free_fb_mem\n"
        "enable_perf             0                 driver's    jw_info/enable_perf\n"
        "enable_usage            1                 driver's    jw_info/enable_usage\n"
        "power_case              5                 driver's    jw_info/power_case\n"
        "flip_count              700               -           jw_info/fps_count\n"
        "blit_count              900               -           jw_info/rxa_blt_scn_cnt\n");
}

TEST(InfoText, PutsAnEmptyLineBetweenAdaptersAndLeavesOutThoseThatDidNotAnswer)
{
    AdapterState silent = busy_adapter();
    silent.there = false;
    EXPECT_EQ(info_text(snapshot_of({silent})), "");
    const std::string text = info_text(snapshot_of({unknown_adapter(), workstation_adapter()}));
    EXPECT_TRUE(text.starts_with("Slot 1: n/a, 0000:02:00.0\nFIELD ")) << text;
    EXPECT_NE(text.find("jw_info/rxa_blt_scn_cnt\n\nSlot 1: Gpu1:QV M-40, 0000:02:00.0\n"),
              std::string::npos)
        << text;
}

TEST(InfoText, MakesHostileNamesPrintable)
{
    AdapterState hostile = unknown_adapter();
    hostile.adapter.name = "\x1b[2J";
    hostile.summary.firmware_name = "\x1b[2J";
    const std::string text = info_text(snapshot_of({hostile}));
    EXPECT_TRUE(text.starts_with("Slot 1: \\x1b[2J, ")) << text;
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST(InfoCsv, HasALineForEachField)
{
    const std::string csv = info_csv(snapshot_of({workstation_adapter()}));
    EXPECT_TRUE(
        csv.starts_with("slot,bus_id,field,value,unit,source\n"
                        "1,0000:02:00.0,engine_clock,,driver's,qv_info/eclk\n"
                        "1,0000:02:00.0,video_clock,,driver's,qv_info/vclk\n"))
        << csv;
    for (const char* const line : {
             "\n1,0000:02:00.0,memory_data_rate,4800,MT/s,dmidecode\n",
             "\n1,0000:02:00.0,display_types,VGA,,\"/proc/gpuinfo_2: Support Display Type, or "
             "drm/card2\"\n",
             "\n1,0000:02:00.0,memory_ddr_generation,5,,dmidecode\n",
             "\n1,0000:02:00.0,memory_width_bits,128,bits,dmidecode\n",
             "\n1,0000:02:00.0,max_resolution_vga,1920x1080@75,\"pixels, Hz\",/proc/gpuinfo_2: VGA "
             "Max Display Resolution\n",
         }) {
        EXPECT_NE(csv.find(line), std::string::npos) << line << csv;
    }
}

TEST(InfoJson, IsADocumentOfFieldsByName)
{
    EXPECT_EQ(info_json(snapshot_of({})),
              "{\n"
              "  \"schema\": \"nimba-smi.info.1\",\n"
              "  \"adapters\": [],\n"
              "  \"errors\": []\n"
              "}\n");
    const std::string json = info_json(snapshot_of({workstation_adapter()}));
    EXPECT_TRUE(json.starts_with(R"({
  "schema": "nimba-smi.info.1",
  "adapters": [
    {
      "slot": 1,
      "name": "Gpu1:QV M-40",
      "bus_id": "0000:02:00.0",
      "fields": {
        "engine_clock": {
          "value": null,
          "unit": "driver's",
          "source": "qv_info/eclk"
        },
)")) << json;
    EXPECT_NE(json.find(R"(
        "display_types": {
          "value": [
            "VGA"
          ],
          "unit": null,
          "source": "/proc/gpuinfo_2: Support Display Type, or drm/card2"
        },
)"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"(
        "max_resolution_vga": {
          "value": {
            "width": 1920,
            "height": 1080,
            "refresh_hz": 75
          },
          "unit": "pixels, Hz",
)"),
              std::string::npos)
        << json;
}

}  // namespace
}  // namespace nimba::smi
