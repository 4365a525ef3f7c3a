// SPDX-License-Identifier: MIT
// The files of a simulated machine as a program reads them.
#include "sim_run.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::sim::test {
namespace {

void expect_output(const std::string& machine, const std::string& command,
                   const std::string& expected)
{
    const Result result = run_on(machine, command);
    EXPECT_EQ(result.output, expected) << command;
}

TEST(NodeDirectories, DebugDirectoryIsThatOfTheCardAndTheVendor)
{
    expect_output("default", "cat /sys/kernel/debug/dri/0/jw/info", "VA=1\n");
    expect_output("two-qv", "cat /sys/kernel/debug/dri/0/qv/info", "VA=1\n");
    expect_output("two-qv", "cat /sys/kernel/debug/dri/1/qv/info", "VA=0\n");
}

TEST(NodeDirectories, InfoAndHwmonAreInThePciDirectory)
{
    expect_output("default", "cat /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage", "0\n");
    expect_output("two-qv", "cat /sys/bus/pci/devices/0000:03:00.0/qv_info/enable_usage", "0\n");
    expect_output("two-qv", "ls /sys/bus/pci/devices/0000:03:00.0/hwmon", "hwmon1\n");
    expect_output("two-qv", "cat /sys/bus/pci/devices/0000:03:00.0/hwmon/hwmon1/temp1_input",
                  "45 *C\n");
}

TEST(NodeDirectories, ProcHasAFileForEachCard)
{
    expect_output("two-qv", "sh -c 'head -n 1 /proc/gpuinfo_0 /proc/gpuinfo_1 | grep Device'",
                  "Device ID : 2030\nDevice ID : 2020\n");
    expect_output("two-qv", "test -e /proc/gpuinfo_2; echo $?", "1\n");
}

TEST(NodeDirectories, ListingsHaveRealDirectoriesOfNodes)
{
    expect_output("default",
                  "sh -c 'cd /sys/bus/pci/devices/0000:01:00.0; stat -L -c %F jw_info hwmon; "
                  "stat -c %F hwmon/hwmon0 jw_info/eclk; stat -c %a jw_info/eclk "
                  "jw_info/dvfs_level hwmon/hwmon0/temp1_input; stat -L -c %a /proc/gpuinfo_0; ls "
                  "jw_info | wc -l'",
                  "directory\ndirectory\ndirectory\nregular empty file\n444\n644\n444\n444\n30\n");
}

TEST(NodeDirectories, PlainOnesShowTheFirstMoment)
{
    const std::string plain = fmt::format("{} run --drivers plain -- ", NIMBA_SIM);
    const Result result =
        run_shell(plain +
                  "sh -c 'cd /sys/bus/pci/devices/0000:01:00.0; cat jw_info/fps_count "
                  "jw_info/dvfs_level hwmon/hwmon0/temp1_input; head -n 1 /proc/gpuinfo_0; "
                  "stat -c %a jw_info/eclk jw_info/dvfs_level; ls jw_info | wc -l; "
                  "test -L jw_info; echo $?'");
    EXPECT_EQ(result.output, "0 0\ndvfs_level:balance\n45 *C\nDevice ID : 1001\n444\n644\n30\n1\n");
}

TEST(NodeDirectories, MissingAndUnreadableOnesAreSoInEitherForm)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("machine.toml", R"(description = "Own nodes"
[[adapter]]
chip = "nimba-k6"
bus_id = "0002:0b:00.1"
card = 4
missing = ["info/eclk", "hwmon"]
unreadable = ["info/vclk", "proc"]
)");
    const std::string look =
        "sh -c 'cd /sys/bus/pci/devices/0002:0b:00.1; ls jw_info | wc -l; "
        "ls -d hwmon jw_info/eclk 2>/dev/null; stat -c %a jw_info/vclk; stat -L -c %a "
        "/proc/gpuinfo_4'";
    expect_output(file, look, "29\n0\n0\n");
    EXPECT_EQ(
        run_shell(fmt::format("{} run --drivers plain -m {} -- ", NIMBA_SIM, file) + look).output,
        "29\n0\n0\n");
}

TEST(NodeDirectories, NodesKeepWhatIsWrittenDuringTheRunOnly)
{
    const std::string node = "/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage";
    expect_output("default", "sh -c 'echo 1 > " + node + "; cat " + node + "'", "1\n");
    expect_output("default", "cat " + node, "0\n");
}

TEST(NodeDirectories, BareAdapterHasNone)
{
    expect_output("bare-adapter", "ls /sys/bus/pci/devices/0000:01:00.0",
                  "class\nconfig\ncurrent_link_speed\ncurrent_link_"
                  "width\ndevice\ndrm\nrevision\nsubsystem\nsubsystem_device\n"
                  "subsystem_vendor\nuevent\nvendor\n");
    expect_output("bare-adapter", "test -e /sys/kernel/debug; echo $?", "1\n");
    expect_output("bare-adapter", "test -e /proc/gpuinfo_0; echo $?", "1\n");
}

TEST(NodeDirectories, ProcessesShowTheirCommandLine)
{
    expect_output("default", "tr '\\0' ' ' < /dev/null", "");
    expect_output("default", "sh -c 'tr \"\\000\" \"|\" < /proc/4100001/cmdline'",
                  "/usr/bin/viewer|--fullscreen|");
}

TEST(NodeDirectories, FilesOfTheMachineFileAreThere)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("machine.toml", R"(description = "Own nodes"
[[adapter]]
chip = "nimba-k6"
bus_id = "0002:0b:00.1"
card = 4
[adapter.debug]
"allocations/00000001/info" = "size=4096\n"
[adapter.info]
fan_speed = "30"
)");
    expect_output(file, "cat /sys/kernel/debug/dri/4/jw/allocations/00000001/info", "size=4096\n");
    expect_output(file, "cat /sys/bus/pci/devices/0002:0b:00.1/jw_info/fan_speed", "30");
}

TEST(NodeDirectories, DriverShowsAllocationsAndDeviceContextsInItsOrder)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("machine.toml", R"(description = "Allocations"
[[adapter]]
chip = "nimba-k6"
bus_id = "0002:0b:00.1"
card = 4
driver = "legacy"

[[adapter.context]]
entry = 12
pid = 4100001
handle = 0x11

[[adapter.allocation]]
entry = 9

[[adapter.allocation]]
entry = 3

[[adapter.allocation]]
)");
    const std::string look =
        "sh -c 'cd /sys/kernel/debug/dri/4/jw; ls -U; ls -U allocations; "
        "sed -n 2,3p allocations/9/info; cat devices/12/12; "
        "stat -c %a info allocations allocations/9 allocations/9/info devices/12/12'";
    const char* expected =
        "info\nallocations\ndevices\n9\n3\n10\ndevice=11\nwidth=256\n"
        "pid = 4100001\nhandle = 11\n644\n755\n755\n444\n444\n";
    expect_output(file, look, expected);
    const std::string plain =
        fmt::format("{} run --drivers plain --machine {} -- ", NIMBA_SIM, file);
    EXPECT_EQ(run_shell(plain + look).output, expected);
}

TEST(NodeDirectories, DriverWithoutMemoryInUseHasEmptyDirectories)
{
    expect_output("closed-nodes", "ls -U /sys/kernel/debug/dri/0/jw",
                  "info\nallocations\ndevices\n");
    expect_output("closed-nodes", "ls -U /sys/kernel/debug/dri/0/jw/allocations", "");
    expect_output("closed-nodes", "ls -U /sys/kernel/debug/dri/0/jw/devices", "");
    expect_output("closed-nodes", "ls -U /sys/kernel/debug/dri/0/qv", "allocations\ndevices\n");
    expect_output("closed-nodes", "ls -U /sys/kernel/debug/dri/0/qv/allocations", "");
    expect_output("closed-nodes", "ls -U /sys/kernel/debug/dri/0/qv/devices", "");
}

}  // namespace
}  // namespace nimba::sim::test
