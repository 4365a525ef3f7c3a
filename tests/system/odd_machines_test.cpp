// SPDX-License-Identifier: MIT
// Machines without an adapter, or with one that lacks something; one suite for each machine.
#include "machine_fixture.hpp"
#include "ordinary_permissions.hpp"

namespace nimba::test {
namespace {

constexpr const char* kNothingFound = "find chip num:0, other vendor chip num:0\n";
constexpr const char* kUnknownChip = "invalidate chip id. \n ";
constexpr const char* kNoLibrary = "open libhwbridge module fail. \n ";

const Adapter kBareK3{DEVICE_ID_NIMBA_K3,
                      "Gpu0:Nimba-GT-K3",
                      NIMBA_VENDOR_ID,
                      "0000:01:00.0",
                      0,
                      0,
                      "renderD128",
                      "",
                      "",
                      0,
                      0x010000};

using NoGpu = MachineTest;

TEST_F(NoGpu, FindsNothing)
{
    record_ = patterned_record();
    discover();
    find_adapter expected = patterned_record();
    expected.header.chip_num = 0;
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(control_enable(), 0);
    EXPECT_EQ(messages_, Texts{});
    EXPECT_EQ(output_, "");
    EXPECT_EQ(opened_, OpenFiles{});
}

TEST_F(NoGpu, DoesNotLive)
{
    discover();
    expect_no_life(0, {kUnknownChip, kNoLibrary});
    EXPECT_EQ(exit(0), 0);
}

using ForeignOnly = MachineTest;

TEST_F(ForeignOnly, NotesTheGpuInSlot2)
{
    expect_found({}, {{0x2684, "Gpu2:Nvidia-GPU", 0x10de, 0, "renderD128", 0, 0x010000}});
    EXPECT_EQ(messages_, (Texts{"find chip nvidia\n", "gpu_busid: 0x0000:01:00.0\n",
                                "gpu_luid: 0x00000000:0x00010000\n",
                                "find chip num:0, other vendor chip num:1\n"}));
}

TEST_F(ForeignOnly, DoesNotLive)
{
    discover();
    expect_no_life(0, {kUnknownChip, kNoLibrary});
    expect_no_life(2, {kUnknownChip, kNoLibrary});
    EXPECT_EQ(exit(2), 0);
}

using UnknownChip = MachineTest;

TEST_F(UnknownChip, IsNotCounted)
{
    expect_found({{DEVICE_ID_NIMBA_K6, "Gpu0:Nimba-K6", NIMBA_VENDOR_ID, "0000:02:00.0", 1, 1,
                   "renderD129", "jw_info", "hwmon/hwmon1", 0, 0x020000}});
    EXPECT_EQ(messages_.at(0), check_line(NIMBA_VENDOR_ID, 0x1fff));
    EXPECT_EQ(messages_.at(1), check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K6));
}

using NoVersion = MachineTest;

TEST_F(NoVersion, SkipsTheAdapter)
{
    expect_found({{DEVICE_ID_QV_M30, "Gpu0:QV M-30", QV_VENDOR_ID, "0000:02:00.0", 1, 1,
                   "renderD129", "qv_info", "hwmon/hwmon1", 0, 0x020000}});
    EXPECT_EQ(messages_.front(), check_line(QV_VENDOR_ID, DEVICE_ID_QV_M30));
}

using ClosedNodes = MachineTest;

TEST_F(ClosedNodes, FindsNothing)
{
    expect_found({});
    EXPECT_EQ(messages_, Texts{kNothingFound});
}

using ClosedRender = MachineTest;

TEST_F(ClosedRender, IsOpenedThroughThePrimaryNode)
{
    expect_found({{DEVICE_ID_NIMBA_K1, "Gpu0:Nimba-K1", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "card0", "jw_info", "hwmon/hwmon0", 0, 0x010000}});
}

using ControlOnly = MachineTest;

TEST_F(ControlOnly, IsOpenedThroughTheControlNode)
{
    expect_found({{DEVICE_ID_QV_M20, "Gpu0:QV M-20", QV_VENDOR_ID, "0000:01:00.0", 0, 1,
                   "controlD64", "qv_info", "hwmon/hwmon0", 0, 0x010000}});
}

using BareAdapter = MachineTest;

TEST_F(BareAdapter, LeavesTheDirectoriesAsTheyWere)
{
    expect_found({kBareK3});
    EXPECT_EQ(messages_.at(5), "find_adapter->header.IS_VA_driver[0] = 0\n");
}

TEST_F(BareAdapter, LivesWithoutUsageAccounting)
{
    discover();
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K3);
    EXPECT_EQ(debug_path(), "/sys/kernel/debug/dri/0/jw");
    EXPECT_NE(block(), nullptr);
    EXPECT_EQ(exit(0), 0);
}

using Unreadable = MachineTest;

TEST_F(Unreadable, LeavesTheDirectoriesAsTheyWere)
{
    const OrdinaryPermissions ordinary;
    expect_found({{DEVICE_ID_NIMBA_K5, "Gpu0:NimbaK5", NIMBA_VENDOR_ID, "0000:01:00.0", 0, 0,
                   "renderD128", "", "", 0, 0x010000}});
    EXPECT_EQ(messages_.at(5), "find_adapter->header.IS_VA_driver[0] = 0\n");
}

using FallbackLibrary = MachineTest;

TEST_F(FallbackLibrary, IsLoaded)
{
    discover();
    expect_life(0, DEVICE_ID_QV_M30, "/sys/bus/pci/devices/0000:01:00.0/qv_info/enable_usage",
                "/sys/kernel/debug/dri/0/qv");
}

using NoLibrary = MachineTest;

TEST_F(NoLibrary, DoesNotLiveAndLeavesUsageAccountingOnUntilExit)
{
    const std::string usage = "/sys/bus/pci/devices/0000:01:00.0/qv_info/enable_usage";
    discover();
    expect_no_life(0, {kNoLibrary});
    EXPECT_EQ(debug_path(), "/sys/kernel/debug/dri/0/qv");
    EXPECT_EQ(machine_file(usage), "1\n");
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(machine_file(usage), "0\n");
}

using LibraryWithoutSize = MachineTest;

TEST_F(LibraryWithoutSize, DoesNotLive)
{
    discover();
    expect_no_life(0, {"get pfn_gfx_get_struct_size fail. \n "});
    EXPECT_EQ(debug_path(), "/sys/kernel/debug/dri/0/jw");
    EXPECT_EQ(exit(0), 0);
}

using LibraryOfSizeZero = MachineTest;

TEST_F(LibraryOfSizeZero, DoesNotLive)
{
    discover();
    expect_no_life(0, {"get_struct_size err\n "});
    EXPECT_EQ(debug_path(), "/sys/kernel/debug/dri/0/jw");
    EXPECT_EQ(exit(0), 0);
}

}  // namespace
}  // namespace nimba::test
