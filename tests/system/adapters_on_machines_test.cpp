// SPDX-License-Identifier: MIT
// The adapters of each machine, one suite for each.
#include "machine_fixture.hpp"

namespace nimba::test {
namespace {

constexpr const char* kFoundOneAndOne = "find chip num:1, other vendor chip num:1\n";

using DefaultMachine = MachineTest;

TEST_F(DefaultMachine, HasANimbaK1AndAnNvidiaGpu)
{
    expect_found({{DEVICE_ID_NIMBA_K1, "Gpu0:Nimba-K1", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "renderD128", "jw_info", "hwmon/hwmon0", 0, 0x010000}},
                 {{0x2684, "Gpu2:Nvidia-GPU", 0x10de, 1, "renderD129", 0, 0x020000}});
    EXPECT_EQ(messages_, (Texts{check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1),
                                "find chip nimbak1\n", "drm_card_idx: 0\n",
                                "gpu_busid: 0x0000:01:00.0\n", "gpu_luid: 0x00000000:0x00010000\n",
                                "find_adapter->header.IS_VA_driver[0] = 1\n", "find chip nvidia\n",
                                "gpu_busid: 0x0000:02:00.0\n", "gpu_luid: 0x00000000:0x00020000\n",
                                kFoundOneAndOne}));
    EXPECT_EQ(output_, "");
}

TEST_F(DefaultMachine, IsFoundAgainByASecondDiscovery)
{
    const std::vector<Adapter> adapters{{DEVICE_ID_NIMBA_K1, "Gpu0:Nimba-K1", NIMBA_VENDOR_ID,
                                         "0000:01:00.0", 0, 1, "renderD128", "jw_info",
                                         "hwmon/hwmon0", 0, 0x010000}};
    const std::vector<ForeignGpu> foreign{
        {0x2684, "Gpu2:Nvidia-GPU", 0x10de, 1, "renderD129", 0, 0x020000}};
    expect_found(adapters, foreign);
    expect_found(adapters, foreign);
}

TEST_F(DefaultMachine, LivesAsANimbaK1)
{
    discover();
    expect_life(0, DEVICE_ID_NIMBA_K1, "/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage",
                "/sys/kernel/debug/dri/0/jw");
    EXPECT_STREQ(library_.symbol<char[60]>("sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/0000:01:00.0");
}

TEST_F(DefaultMachine, DoesNotLiveAsTheNvidiaGpuOrAnEmptySlot)
{
    discover();
    expect_no_life(1, {"invalidate chip id. \n ", "open libhwbridge module fail. \n "});
    expect_no_life(2, {"invalidate chip id. \n ", "open libhwbridge module fail. \n "});
    EXPECT_EQ(debug_path(), "");
    EXPECT_EQ(machine_file("/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage"), "0\n");
}

TEST_F(DefaultMachine, ShowsOnlyTheNvidiaGpuToAFilterForTheOtherVendor)
{
    record_.header.vendor_id_filter = QV_VENDOR_ID;
    expect_found({}, {{0x2684, "Gpu2:Nvidia-GPU", 0x10de, 1, "renderD129", 0, 0x020000}});
    EXPECT_EQ(messages_.front(), check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1));
}

using Mixed = MachineTest;

TEST_F(Mixed, HasAQvM30ANimbaK3tAndAnIntelGpu)
{
    expect_found({{DEVICE_ID_QV_M30, "Gpu0:QV M-30", QV_VENDOR_ID, "0001:0a:1f.7", 12, 1,
                   "renderD140", "qv_info", "hwmon/hwmon12", 1, 0x0a1f07},
                  {DEVICE_ID_NIMBA_K3T, "Gpu1:Nimba-GT-K3t", NIMBA_VENDOR_ID, "0000:03:00.1", 20, 1,
                   "renderD150", "jw_info", "hwmon/hwmon20", 0, 0x030001}},
                 {{0x56a0, "Gpu2:Intel-GPU", 0x8086, 0, "renderD128", 0, 0x000200}});
    EXPECT_EQ(
        messages_,
        (Texts{check_line(QV_VENDOR_ID, DEVICE_ID_QV_M30), "find chip mv9\n", "drm_card_idx: 12\n",
               "gpu_busid: 0x0001:0a:1f.7\n", "gpu_luid: 0x00000001:0x000a1f07\n",
               "find_adapter->header.IS_VA_driver[0] = 1\n",
               check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K3T), "find chip nimbak3t\n",
               "drm_card_idx: 20\n", "gpu_busid: 0x0000:03:00.1\n",
               "gpu_luid: 0x00000000:0x00030001\n", "find_adapter->header.IS_VA_driver[1] = 1\n",
               "find chip intel\n", "gpu_busid: 0x0000:00:02.0\n",
               "gpu_luid: 0x00000000:0x00000200\n", "find chip num:2, other vendor chip num:1\n"}));
    EXPECT_EQ(output_, "");
}

TEST_F(Mixed, LivesAsEitherAdapter)
{
    discover();
    expect_life(0, DEVICE_ID_QV_M30, "/sys/bus/pci/devices/0001:0a:1f.7/qv_info/enable_usage",
                "/sys/kernel/debug/dri/12/qv");
    expect_life(1, DEVICE_ID_NIMBA_K3T, "/sys/bus/pci/devices/0000:03:00.1/jw_info/enable_usage",
                "/sys/kernel/debug/dri/20/jw");
}

TEST_F(Mixed, SwitchesFromOneAdapterToTheOtherWithoutAnExit)
{
    const char* const m30 = "/sys/bus/pci/devices/0001:0a:1f.7/qv_info/enable_usage";
    const char* const k3t = "/sys/bus/pci/devices/0000:03:00.1/jw_info/enable_usage";
    discover();
    EXPECT_EQ(init(0), DEVICE_ID_QV_M30);
    EXPECT_EQ(init(1), DEVICE_ID_NIMBA_K3T);
    EXPECT_EQ(machine_file(m30), "1\n");
    EXPECT_EQ(machine_file(k3t), "1\n");
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(machine_file(m30), "1\n");
    EXPECT_EQ(machine_file(k3t), "0\n");
    EXPECT_EQ(init(0), DEVICE_ID_QV_M30);
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(machine_file(m30), "0\n");
}

using TwoQv = MachineTest;

TEST_F(TwoQv, HasAQvM30AndAQvM20)
{
    expect_found({{DEVICE_ID_QV_M30, "Gpu0:QV M-30", QV_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "renderD128", "qv_info", "hwmon/hwmon0", 0, 0x010000},
                  {DEVICE_ID_QV_M20, "Gpu1:QV M-20", QV_VENDOR_ID, "0000:03:00.0", 1, 0,
                   "renderD129", "qv_info", "hwmon/hwmon1", 0, 0x030000}});
    EXPECT_EQ(messages_.back(), "find chip num:2, other vendor chip num:0\n");
    EXPECT_EQ(output_, "");
}

TEST_F(TwoQv, LivesAsEitherAdapter)
{
    discover();
    expect_life(0, DEVICE_ID_QV_M30, "/sys/bus/pci/devices/0000:01:00.0/qv_info/enable_usage",
                "/sys/kernel/debug/dri/0/qv");
    expect_life(1, DEVICE_ID_QV_M20, "/sys/bus/pci/devices/0000:03:00.0/qv_info/enable_usage",
                "/sys/kernel/debug/dri/1/qv");
}

using ThreeAdapters = MachineTest;

TEST_F(ThreeAdapters, FillTheThreeSlots)
{
    expect_found({{DEVICE_ID_NIMBA_K2, "Gpu0:NimbaK2", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "renderD128", "jw_info", "hwmon/hwmon0", 0, 0x010000},
                  {DEVICE_ID_QV_M40, "Gpu1:QV M-40", QV_VENDOR_ID, "0000:02:00.0", 1, 1,
                   "renderD129", "qv_info", "hwmon/hwmon1", 0, 0x020000},
                  {DEVICE_ID_NIMBA_K3, "Gpu2:Nimba-GT-K3", NIMBA_VENDOR_ID, "0001:03:00.0", 2, 0,
                   "renderD130", "jw_info", "hwmon/hwmon2", 1, 0x030000}});
    EXPECT_EQ(messages_.back(), "find chip num:3, other vendor chip num:0\n");
    EXPECT_EQ(output_, "");
}

TEST_F(ThreeAdapters, LiveOneAfterTheOther)
{
    discover();
    expect_life(2, DEVICE_ID_NIMBA_K3, "/sys/bus/pci/devices/0001:03:00.0/jw_info/enable_usage",
                "/sys/kernel/debug/dri/2/jw");
    expect_life(1, DEVICE_ID_QV_M40, "/sys/bus/pci/devices/0000:02:00.0/qv_info/enable_usage",
                "/sys/kernel/debug/dri/1/qv");
    expect_life(0, DEVICE_ID_NIMBA_K2, "/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage",
                "/sys/kernel/debug/dri/0/jw");
}

using TwoAndForeign = MachineTest;

TEST_F(TwoAndForeign, FillTheThreeSlots)
{
    expect_found({{DEVICE_ID_NIMBA_K3T, "Gpu0:Nimba-GT-K3t", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "renderD128", "jw_info", "hwmon/hwmon0", 0, 0x010000},
                  {DEVICE_ID_NIMBA_K5, "Gpu1:NimbaK5", NIMBA_VENDOR_ID, "0000:02:00.0", 1, 1,
                   "renderD129", "jw_info", "hwmon/hwmon1", 0, 0x020000}},
                 {{0x2684, "Gpu2:Nvidia-GPU", 0x10de, 2, "renderD130", 0, 0x030000}});
    EXPECT_EQ(output_, "");
}

using ThreeAndForeign = MachineTest;

TEST_F(ThreeAndForeign, LeaveTheFourthDeviceUnexamined)
{
    expect_found({{DEVICE_ID_NIMBA_K6, "Gpu0:Nimba-K6", NIMBA_VENDOR_ID, "0000:01:00.0", 1, 1,
                   "renderD129", "jw_info", "hwmon/hwmon1", 0, 0x010000},
                  {DEVICE_ID_QV_M20, "Gpu1:QV M-20", QV_VENDOR_ID, "0000:02:00.0", 2, 1,
                   "renderD130", "qv_info", "hwmon/hwmon2", 0, 0x020000}},
                 {{0x4680, "Gpu2:Intel-GPU", 0x8086, 0, "renderD128", 0, 0x000200}});
    // The second pass finds the Intel GPU before it comes to the third device.
    EXPECT_EQ(output_, "exceed  MAX_CHIP_NUM. \n");
}

using ManyDevices = MachineTest;

TEST_F(ManyDevices, CountADeviceOnAnotherBusAmongTheThreeExamined)
{
    expect_found({{DEVICE_ID_NIMBA_K6, "Gpu0:Nimba-K6", NIMBA_VENDOR_ID, "0000:01:00.0", 1, 1,
                   "renderD129", "jw_info", "hwmon/hwmon1", 0, 0x010000}},
                 {{0x744c, "Gpu2:Amd-GPU", 0x1002, 2, "renderD130", 0, 0x020000}});
    EXPECT_EQ(messages_.back(), kFoundOneAndOne);
    EXPECT_EQ(output_, "exceed  MAX_CHIP_NUM. \n");
}

using AmdBeside = MachineTest;

TEST_F(AmdBeside, AdapterIsANimbaK3)
{
    expect_found({{DEVICE_ID_NIMBA_K3, "Gpu0:Nimba-GT-K3", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "renderD128", "jw_info", "hwmon/hwmon0", 0, 0x010000}},
                 {{0x744c, "Gpu2:Amd-GPU", 0x1002, 1, "renderD129", 0, 0x020000}});
    EXPECT_EQ(messages_.at(6), "find chip amd\n");
}

using IntelBeside = MachineTest;

TEST_F(IntelBeside, AdapterIsANimbaK2)
{
    expect_found({{DEVICE_ID_NIMBA_K2, "Gpu0:NimbaK2", NIMBA_VENDOR_ID, "0000:01:00.0", 1, 1,
                   "renderD129", "jw_info", "hwmon/hwmon1", 0, 0x010000}},
                 {{0x4680, "Gpu2:Intel-GPU", 0x8086, 0, "renderD128", 0, 0x000200}});
    EXPECT_EQ(messages_.at(6), "find chip intel\n");
}

using UnknownBeside = MachineTest;

TEST_F(UnknownBeside, AdapterIsANimbaK5)
{
    expect_found({{DEVICE_ID_NIMBA_K5, "Gpu0:NimbaK5", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "renderD128", "jw_info", "hwmon/hwmon0", 0, 0x010000}},
                 {{0x1111, "Gpu2:Unknown-GPU", 0x1234, 1, "renderD129", 0, 0x020000}});
    EXPECT_EQ(messages_.at(6), "find chip unknown, verdor i:0x1234, device id 0x1111\n");
}

}  // namespace
}  // namespace nimba::test
