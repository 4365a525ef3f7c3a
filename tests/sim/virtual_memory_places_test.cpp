// SPDX-License-Identifier: MIT
// Where drivers show virtual memory: in the debug directory of a QV chip, beside that of a Nimba
// one.
#include "driver/live_driver.hpp"
#include "memory_tables.hpp"
#include "sim_run.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using Names = std::vector<std::string>;

// A QV M20 as card 3, with these keys and tables.
std::string qv_adapter(const std::string& keys, const std::string& tables)
{
    return "[[adapter]]\nchip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = 3\n" + keys + "\n" +
           tables;
}

constexpr const char* kThreeAllocations = R"(
[[adapter.allocation]]
handle = 0xab

[[adapter.allocation]]
handle = 0x1

[[adapter.shape]]
name = "any"

[adapter.generated]
allocations = 10
)";

TEST(VirtualMemoryPlaces, NimbaChipHasADirectoryBesideTheDebugDirectory)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + kThreeAllocations))};
    EXPECT_EQ(driver.list("dri/2"), (Names{"jw", "qv"}));
    EXPECT_EQ(driver.list("dri/2/qv"), (Names{"allocations", "devices"}));
    EXPECT_EQ(driver.list("dri/2/qv/devices"), (Names{"0000001f", "00000020"}));
    EXPECT_EQ(driver.list("dri/2/qv/devices/0000001f"), (Names{"info", "vm_info"}));
    EXPECT_EQ(driver.list("dri/2/qv/allocations"),
              (Names{"ab", "1", "2", "3", "4", "5", "6", "7", "8", "9", "a", "b"}));
    EXPECT_EQ(driver.list("dri/2/qv/allocations/ab"), Names{"vm_info"});
    EXPECT_EQ(driver.list("dri/2/qv/allocations/b"), Names{"vm_info"});
    EXPECT_EQ(driver.list("dri/2/jw/allocations"),
              (Names{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}));
    EXPECT_EQ(driver.list("dri/2/jw/allocations/12"), Names{"info"});
    EXPECT_EQ(driver.list("dri/2/jw/devices/1"), Names{"info"});
}

TEST(VirtualMemoryPlaces, QvChipHasItInTheDebugDirectoryAndNamesAllocationsByHandle)
{
    LiveDriver driver{machine_of(qv_adapter("", std::string{kTwoContexts} + kThreeAllocations))};
    EXPECT_EQ(driver.list("dri/3"), Names{"qv"});
    EXPECT_EQ(driver.list("dri/3/qv"), (Names{"info", "heaps", "allocations", "devices"}));
    EXPECT_EQ(driver.list("dri/3/qv/devices"), (Names{"1", "12"}));
    EXPECT_EQ(driver.list("dri/3/qv/devices/12"), (Names{"info", "vm_info"}));
    EXPECT_EQ(driver.list("dri/3/qv/allocations"),
              (Names{"ab", "1", "2", "3", "4", "5", "6", "7", "8", "9", "a", "b"}));
    EXPECT_EQ(driver.list("dri/3/qv/allocations/ab"), (Names{"info", "vm_info"}));
    EXPECT_EQ(driver.list("dri/3/qv/allocations/b"), (Names{"info", "vm_info"}));
    EXPECT_EQ(driver.read("dri/3/qv/allocations/b/info")->substr(0, 9), "handle=b\n");
    EXPECT_NE(driver.read("dri/3/qv/allocations/b/vm_info"), std::nullopt);
    EXPECT_EQ(driver.read("dri/3/qv/devices/12/info"),
              "pid = 4100002\nhandle = 20\nflags = 0x3\nprocess = a b\n");
}

TEST(VirtualMemoryPlaces, LegacyDriverOfAQvChipShowsTheContextUnderBothNames)
{
    LiveDriver driver{machine_of(qv_adapter("driver = \"legacy\"", kTwoContexts))};
    EXPECT_EQ(driver.list("dri/3/qv/devices/12"), (Names{"12", "info", "vm_info"}));
    const char* text = "pid = 4100002\nhandle = 20\nflags = 0x3\nprocess = a b\n";
    EXPECT_EQ(driver.read("dri/3/qv/devices/12/12"), text);
    EXPECT_EQ(driver.read("dri/3/qv/devices/12/info"), text);
}

TEST(VirtualMemoryPlaces, LegacyDriverOfANimbaChipHasInfoThere)
{
    LiveDriver driver{machine_of(adapter("driver = \"legacy\"", kTwoContexts))};
    EXPECT_EQ(driver.list("dri/2/jw/devices/12"), Names{"12"});
    EXPECT_EQ(driver.list("dri/2/qv/devices/00000020"), (Names{"info", "vm_info"}));
}

TEST(VirtualMemoryPlaces, DirectoriesAreThereWhereAllocationsAndDevicesAre)
{
    LiveDriver empty{machine_of(adapter("", ""))};
    EXPECT_EQ(empty.list("dri/2/qv"), (Names{"allocations", "devices"}));
    EXPECT_EQ(empty.list("dri/2/qv/allocations"), Names{});
    EXPECT_EQ(empty.list("dri/2/qv/devices"), Names{});
    LiveDriver none{machine_of(adapter("driver = \"none\"", ""))};
    EXPECT_EQ(none.look_up("dri/2/qv"), std::nullopt);
    LiveDriver closed{machine_of(adapter("debug = false", ""))};
    EXPECT_EQ(closed.look_up("dri/2/qv"), std::nullopt);
}

TEST(VirtualMemoryPlaces, DebugDirectoryWithoutPermissionsClosesTheOneBesideIt)
{
    LiveDriver driver{machine_of(adapter("unreadable = [\"debug\"]", ""))};
    EXPECT_EQ(driver.look_up("dri/2/jw"), (NodeAttributes{true, 0}));
    EXPECT_EQ(driver.look_up("dri/2/qv"), (NodeAttributes{true, 0}));
    EXPECT_EQ(driver.look_up("dri/2/qv/devices"), (NodeAttributes{true, 0755}));
    LiveDriver none{machine_of(
        adapter("driver = \"none\"\nunreadable = [\"debug\"]", "[adapter.debug]\nx = \"\"\n"))};
    EXPECT_EQ(none.look_up("dri/2/jw"), (NodeAttributes{true, 0}));
    EXPECT_EQ(none.look_up("dri/2/qv"), std::nullopt);
}

TEST(VirtualMemoryPlaces, NodesCannotBeWritten)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + kThreeAllocations))};
    for (const char* path : {"dri/2/qv/devices/0000001f/vm_info", "dri/2/qv/devices/0000001f/info",
                             "dri/2/qv/allocations/ab/vm_info", "dri/2/qv/allocations/b/vm_info"}) {
        EXPECT_EQ(driver.look_up(path), (NodeAttributes{false, 0444})) << path;
        EXPECT_EQ(driver.write(path, ""), EACCES) << path;
    }
    EXPECT_EQ(driver.write("dri/2/qv/allocations/b", ""), EISDIR);
    EXPECT_EQ(driver.write("dri/2/qv/allocations/b/info", ""), ENOENT);
}

TEST(VirtualMemoryPlaces, OtherSpellingsOfAHandleAreNotFound)
{
    LiveDriver driver{machine_of(qv_adapter("", std::string{kTwoContexts} + kThreeAllocations))};
    ASSERT_TRUE(driver.look_up("dri/3/qv/allocations/b"));
    for (const char* name : {"B", "0b", "0xb", "b ", "c", "", "AB", "10000000000000000b"}) {
        EXPECT_EQ(driver.look_up("dri/3/qv/allocations/" + std::string{name}), std::nullopt)
            << name;
    }
}

TEST(VirtualMemoryPlaces, HandleThatIsGivenOutAgainNamesTheNewAllocation)
{
    std::chrono::nanoseconds now{0};
    LiveDriver driver{machine_of(qv_adapter("", R"(
[[adapter.context]]
pid = 1
handle = 7

[[adapter.shape]]
name = "any"

[adapter.change]
appear = 100
vanish = 1
live = 1
)")),
                      [&] { return now; }};
    const auto address = [&] {
        const std::string text = driver.read("dri/3/qv/allocations/1/info").value();
        const std::size_t start = text.find("gpu_virt_addr=");
        return text.substr(start, text.find('\n', start) - start);
    };
    now = std::chrono::milliseconds{990};
    EXPECT_EQ(driver.list("dri/3/qv/allocations"), Names{"1"});
    EXPECT_EQ(address(), "gpu_virt_addr=1099511627776");
    now = std::chrono::milliseconds{1000};
    EXPECT_EQ(driver.list("dri/3/qv/allocations"), Names{"1"});
    EXPECT_EQ(address(), "gpu_virt_addr=1099511894016");
}

TEST(VirtualMemoryPlaces, TextsAreNamesWhereDirectoriesCanHaveThem)
{
    LiveDriver driver{machine_of(adapter("", R"(
[[adapter.context]]
pid = 1
handle = 0x10

[[adapter.context]]
pid = 2
handle = "00000010"

[[adapter.context]]
pid = 3
handle = "a b"

[[adapter.allocation]]
handle = "xyz"

[[adapter.allocation]]
handle = "xyz"
device = "none"

[[adapter.allocation]]
handle = "../1"

[[adapter.allocation]]
handle = "1"

[[adapter.allocation]]
)"))};
    EXPECT_EQ(driver.list("dri/2/jw/devices"), (Names{"1", "2", "3"}));
    EXPECT_EQ(driver.list("dri/2/qv/devices"), Names{"00000010"});
    EXPECT_EQ(driver.read("dri/2/qv/devices/00000010/info"), "pid = 1\nhandle = 10\n");
    EXPECT_EQ(driver.list("dri/2/jw/allocations"), (Names{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(driver.list("dri/2/qv/allocations"), (Names{"xyz", "1", "2"}));
    EXPECT_EQ(driver.read("dri/2/qv/allocations/xyz/vm_info")->substr(0, 38),
              "=====vm node info=====\ndevice_pid = 1\n");
}

TEST(VirtualMemoryPlaces, SimulationGivesOutNoHandleThatATextShows)
{
    LiveDriver driver{machine_of(qv_adapter("", R"(
[[adapter.context]]
pid = 1
handle = 0x10

[[adapter.allocation]]
handle = "2"

[[adapter.allocation]]
handle = "80000000"

[[adapter.shape]]
name = "any"

[adapter.generated]
allocations = 2
)"))};
    EXPECT_EQ(driver.list("dri/3/qv/allocations"), (Names{"2", "80000000", "1", "3"}));
}

TEST(VirtualMemoryPlaces, ProgramsReadTheNodesAlsoWhereTheyArePlainFiles)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write(
        "machine.toml", "description = \"a\"\n" + adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
handle = 0xabc
gpu_virt_addr = 0x100200000
size = 4096
fb_offset = 0x7000
)"));
    const std::string look =
        "sh -c 'cd /sys/kernel/debug/dri/2/qv && cat devices/0000001f/vm_info "
        "devices/0000001f/info allocations/abc/vm_info'";
    const char* expected =
        "0:0: entry addr:10000000, buffer:pt0_0\n"
        "1:4: entry addr:10001000, buffer:pt1_4\n"
        "2:2049: entry addr:10002000, buffer:pt2_2049\n"
        "2:0 Snoop:0 Segment:0 LargePage:0 Addr:7000\n"
        "pid = 4100001\nhandle = 1f\n"
        "=====vm node info=====\ndevice_pid = 4100001\ndevice_pname = \n"
        "gpu_va = 100200000\nsize = 1000\n";
    EXPECT_EQ(run_on(file, look).output, expected);
    const std::string plain =
        fmt::format("{} run --drivers plain --machine {} -- ", NIMBA_SIM, file);
    EXPECT_EQ(run_shell(plain + look).output, expected);
}

}  // namespace
}  // namespace nimba::sim::test
