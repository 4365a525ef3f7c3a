// SPDX-License-Identifier: MIT
#include "adapter_states.hpp"
#include "tools/smi/snapshot/json.hpp"
#include "tools/smi/text/json.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

std::string adapter_line(const AdapterState& adapter)
{
    return json_line(state_json(adapter));
}

TEST(SnapshotJson, HasEveryFigureWithTheKeysOfTheCommandsThatShowItAlone)
{
    EXPECT_EQ(
        adapter_line(busy_adapter()),
        R"({"slot":0,"name":"Gpu0:Nimba-K6","bus_id":"0000:01:00.0","card":1,)"
        R"("vendor_id":"0x4e4d","device_id":"0x1006","driver":"va","luid":{"low":0,"high":65536},)"
        R"("answered":true,)"
        R"("summary":{"frame_buffer_size":8192,"memory_data_rate":2000,"display_ports":3,)"
        R"("display_types":["HDMI","DP"],"memory_channels":4,"pcie_lanes":16,)"
        R"("memory_ddr_generation":null,"memory_width_bits":null,"driver_version":"1.2.a",)"
        R"("firmware_version":"8.f.0.1c","firmware_name":"K6 desktop board",)"
        R"("pixel_fillrate":57600,"texture_fillrate":115200,"memory_clock_freq":1000,)"
        R"("max_resolution_hdmi_dp":{"width":3840,"height":2160,"refresh_hz":60},)"
        R"("max_resolution_vga":null,"memory_usage":37,"use_rate_3d":0,"use_rate_video":30,)"
        R"("use_rate_vpp":15,"realtime_temperature":71,"pcie_generation":4,)"
        R"("engine_vcp_info":2,"vbios_version_number":8,"pmp_version_number":3,)"
        R"("release_date_number":20240315,"driver_version_number":1,"slice_mask":7,)"
        R"("frame_buffer_free":4096,"enable_perf":0,"enable_usage":1,"power_case":5,)"
        R"("flip_count":700,"blit_count":900},)"
        R"("memory":{"source":"node","unit":"MB","segments":[{"segment":"0","name":null,)"
        R"("used_bytes":3000000000,"total_bytes":4000000000}],)"
        R"("sum":{"used_bytes":3000000000,"total_bytes":4000000000}},)"
        R"("clocks":{"engine_clock":550,"video_clock":350,"memory_clock":1000,"core_clock":600,)"
        R"("gfx_clock":550,"gfx_voltage":800,"dvfs_level":"balance"},)"
        R"("sensors":{"temperature_celsius":72,"fan0":1600,"fan1":1650,"fan_speed":null},)"
        R"("usage":{"flips_per_second":null,"blits_per_second":null,"frames_per_second":null,)"
        R"("average_per_second":null,"engine_3d_percent":95,"engine_vcp_percent":30,)"
        R"("engine_vpp_percent":0,"bandwidth_words":[null,null,null,null,null,null,null,null,)"
        R"(null,null,null,null],"busy_words":[null,null,null,null,null,null,null,null,null,)"
        R"(null]},)"
        R"("processes":{"devices":[{"slot":0,"bus_id":"0000:01:00.0","device":"0x13",)"
        R"("processes":[{"pid":4100003,"name":"maze"}],"allocations":3,"bytes":1610612736,)"
        R"("segments":{"0":1610612736,"1":0,"2":0,"3":0,"4+":0,"none":0}},)"
        R"({"slot":0,"bus_id":"0000:01:00.0","device":"0x11","processes":[{"pid":4100001,)"
        R"("name":"compositor"},{"pid":4100007,"name":null}],"allocations":3,"bytes":4096,)"
        R"("segments":{"0":4096,"1":0,"2":0,"3":0,"4+":0,"none":0}}],"total":{"allocations":6,)"
        R"("bytes":1610616832,"segments":{"0":1610616832,"1":0,"2":0,"3":0,"4+":0,"none":0}}}})"
        "\n");
}

TEST(SnapshotJson, HasNullForWhatCouldNotBeRead)
{
    AdapterState silent = unknown_adapter();
    silent.there = false;
    const std::string line = adapter_line(silent);
    EXPECT_TRUE(line.starts_with(
        R"({"slot":1,"name":null,"bus_id":"0000:02:00.0","card":null,"vendor_id":null,)"
        R"("device_id":null,"driver":"unknown","luid":null,"answered":false,)"
        R"("summary":{"frame_buffer_size":null,)"))
        << line;
    EXPECT_NE(line.find(R"("blit_count":null},"memory":null,"clocks":{"engine_clock":null,)"),
              std::string::npos)
        << line;
    EXPECT_TRUE(line.ends_with("\"processes\":null}\n")) << line;
}

TEST(SnapshotJson, IsADocumentWithTheForeignGpuAndTheErrors)
{
    MachineSnapshot snapshot = snapshot_of({});
    EXPECT_EQ(json_line(snapshot_json(snapshot)),
              R"({"schema":"nimba-smi.overview.1","time":"2026-11-21T18:02:59.007Z",)"
              R"("adapters":[],"foreign_gpu":null,"errors":[]})"
              "\n");
    snapshot.foreign_gpu = kForeignGpu;
    snapshot.problems = {{ExitStatus::kNoAdapter, std::nullopt, std::nullopt, "none"}};
    EXPECT_EQ(json_line(snapshot_json(snapshot)),
              R"({"schema":"nimba-smi.overview.1","time":"2026-11-21T18:02:59.007Z",)"
              R"("adapters":[],"foreign_gpu":{"name":"Gpu0:Intel-GPU","bus_id":"0000:00:02.0",)"
              R"("card":0,"vendor_id":"0x8086","device_id":"0x4680","luid":{"low":0,"high":512}},)"
              R"("errors":[{"status":3,"adapter":null,"call":null,"message":"none"}]})"
              "\n");
}

}  // namespace
}  // namespace nimba::smi
