// SPDX-License-Identifier: MIT
// The page tables that drivers show, made from the allocations of their device contexts, over time.
#include "driver/live_driver.hpp"
#include "memory_tables.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>

namespace nimba::sim::test {
namespace {

// The page tables of the first of the two contexts.
std::string tables(const std::string& allocations)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + allocations))};
    return driver.read("dri/2/qv/devices/0000001f/vm_info").value();
}

TEST(VirtualMemory, ContextSeesItsAllocations)
{
    EXPECT_EQ(tables(R"(
[[adapter.allocation]]
gpu_virt_addr = 0x100000000
size = 0x201000
segmentid = 3
fb_offset = 0x4000000

[[adapter.allocation]]
gpu_virt_addr = 0x100203000
size = 1
cpu_visible = 1
segmentid = 4
fb_offset = 0x5000000

[[adapter.allocation]]
device = 0x20
gpu_virt_addr = 0x100400000
size = 4096
)"),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:4: entry addr:10001000, buffer:pt1_4\n"
              "1:0 Snoop:0 Segment:3 LargePage:1 Addr:4000000\n"
              "2:2049: entry addr:10002000, buffer:pt2_2049\n"
              "2:0 Snoop:0 Segment:3 LargePage:0 Addr:4200000\n"
              "2:3 Snoop:1 Segment:4 LargePage:0 Addr:5000000\n");
}

TEST(VirtualMemory, ContextWithoutAllocationsHasAnEmptyDump)
{
    EXPECT_EQ(tables(""), "");
    EXPECT_EQ(tables("[[adapter.allocation]]\ndevice = 0x20\n"), "");
}

TEST(VirtualMemory, SegmentIsZeroForANegativeOneAndForAText)
{
    for (const char* segment : {"-1", "-2147483648", "\"2\"", "\"\""}) {
        EXPECT_EQ(tables("[[adapter.allocation]]\nsize = 1\nfb_offset = 4096\nsegmentid = " +
                         std::string{segment}),
                  "0:0: entry addr:10000000, buffer:pt0_0\n"
                  "1:4: entry addr:10001000, buffer:pt1_4\n"
                  "2:2048: entry addr:10002000, buffer:pt2_2048\n"
                  "2:0 Snoop:0 Segment:0 LargePage:0 Addr:1000\n")
            << segment;
    }
}

TEST(VirtualMemory, SnoopIsOneForEveryVisibilityButZeroAndTexts)
{
    const auto snoop = [](const std::string& value) {
        const std::string text = tables("[[adapter.allocation]]\nsize = 1\ncpu_visible = " + value);
        return text.substr(text.find("Snoop:"), 7);
    };
    EXPECT_EQ(snoop("0"), "Snoop:0");
    EXPECT_EQ(snoop("\"1\""), "Snoop:0");
    EXPECT_EQ(snoop("1"), "Snoop:1");
    EXPECT_EQ(snoop("-7"), "Snoop:1");
}

TEST(VirtualMemory, TextsInThePlaceOfAddressOrSizeMapNothing)
{
    EXPECT_EQ(tables("[[adapter.allocation]]\ngpu_virt_addr = \"100000000\"\n"), "");
    EXPECT_EQ(tables("[[adapter.allocation]]\nsize = \"4096\"\n"), "");
    EXPECT_EQ(tables("[[adapter.allocation]]\ndevice = \"31\"\n"), "");
    EXPECT_EQ(tables("[[adapter.allocation]]\nsize = 0\n"), "");
}

TEST(VirtualMemory, AllocationWithoutAPlaceHasOneThatItsHandleGives)
{
    const auto physical = [](const std::string& keys) {
        const std::string text = tables("[[adapter.allocation]]\nsize = 1\n" + keys);
        return text.substr(text.find("Addr:"));
    };
    EXPECT_EQ(physical("handle = 1\n"), "Addr:30a00000\n");
    EXPECT_EQ(physical("handle = 2\n"), "Addr:61400000\n");
    EXPECT_EQ(physical("handle = 2\nfb_offset = \"9\"\n"), "Addr:61400000\n");
    // in the same place of its 2 MiB as the address
    EXPECT_EQ(physical("handle = 1\ngpu_virt_addr = 0x7000\n"), "Addr:30a07000\n");
    EXPECT_EQ(physical("handle = \"x\"\n"), "Addr:0\n");
}

TEST(VirtualMemory, FirstAllocationAtAnAddressWins)
{
    EXPECT_EQ(tables(R"(
[[adapter.allocation]]
gpu_virt_addr = 0x2000
size = 0x1000
fb_offset = 0x4000000
segmentid = 1

[[adapter.allocation]]
gpu_virt_addr = 0x1000
size = 0x3000
fb_offset = 0x5000000
segmentid = 2
)"),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:0: entry addr:10001000, buffer:pt1_0\n"
              "2:0: entry addr:10002000, buffer:pt2_0\n"
              "2:1 Snoop:0 Segment:2 LargePage:0 Addr:5000000\n"
              "2:2 Snoop:0 Segment:1 LargePage:0 Addr:4000000\n"
              "2:3 Snoop:0 Segment:2 LargePage:0 Addr:5002000\n");
}

constexpr const char* kSmallTables = R"(
[[adapter.context]]
pid = 1
handle = 5
page_tables = { level0 = 2, level1 = 2, level2 = 2, entries = 2 }

[[adapter.allocation]]
gpu_virt_addr = 0x3ffffffff000
size = 0x2000
fb_offset = 0x1000

[[adapter.allocation]]
gpu_virt_addr = 0x410000000000
size = 0x1000

[[adapter.allocation]]
gpu_virt_addr = 0x40fffffff000
size = 0x2000
fb_offset = 0x3000
)";

TEST(VirtualMemory, PageTablesOfTheirOwnAreaKeepAllocationsOutOfIt)
{
    LiveDriver driver{machine_of(adapter("", kSmallTables))};
    EXPECT_EQ(driver.read("dri/2/qv/devices/00000005/vm_info"),
              "0:127: entry addr:10000000, buffer:pt0_127\n"
              "1:65535: entry addr:10001000, buffer:pt1_65535\n"
              "2:33554431: entry addr:10002000, buffer:pt2_33554431\n"
              "2:511 Snoop:0 Segment:0 LargePage:0 Addr:1000\n"
              "0:130: entry addr:10003000, buffer:pt0_130\n"
              "1:66560: entry addr:10004000, buffer:pt1_66560\n"
              "2:34078720: entry addr:10005000, buffer:pt2_34078720\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:61400000\n"
              "0:128: entry addr:10006000, buffer:pt0_128\n"
              "1:65536: entry addr:10007000, buffer:pt1_65536\n"
              "2:33554432: entry addr:10008000, buffer:pt2_33554432\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:0\n"
              "0:129: entry addr:10009000, buffer:pt0_129\n"
              "1:66048: entry addr:1000a000, buffer:pt1_66048\n"
              "2:33816576: entry addr:1000b000, buffer:pt2_33816576\n"
              "2:0 Snoop:0 Segment:0 LargePage:0 Addr:200000\n");
}

TEST(VirtualMemory, MissingNumbersOfPageTablesFollowFromThoseAbove)
{
    const auto lines = [](const std::string& keys) {
        LiveDriver driver{machine_of(adapter(
            "",
            "[[adapter.context]]\npid = 1\nhandle = 5\n[adapter.context.page_tables]\n" + keys))};
        const std::string text = driver.read("dri/2/qv/devices/00000005/vm_info").value();
        std::string counts;
        for (const char* part : {"pt0_", "pt1_", "pt2_", "Addr:"}) {
            int found = 0;
            for (auto place = text.find(part); place != std::string::npos;
                 place = text.find(part, place + 1)) {
                ++found;
            }
            counts += std::to_string(found) + " ";
        }
        return counts;
    };
    EXPECT_EQ(lines(""), "1 1 1 32 ");
    EXPECT_EQ(lines("level0 = 3\n"), "3 3 3 96 ");
    EXPECT_EQ(lines("level1 = 4\n"), "1 4 4 128 ");
    EXPECT_EQ(lines("level1 = 2\nlevel2 = 5\n"), "1 2 5 160 ");
    EXPECT_EQ(lines("level2 = 0\n"), "1 1 0 0 ");
    EXPECT_EQ(lines("level1 = 200\nlevel2 = 100000\n"), "1 200 100000 1000000 ");
}

TEST(VirtualMemory, TextsOfTheMachineFileReplaceDumpAndNode)
{
    LiveDriver driver{machine_of(adapter("", R"(
[[adapter.context]]
pid = "x"
handle = 5
vm_info = "2:0: entry\n\u0000\nSnoop\n"

[[adapter.context]]
pid = 1
handle = 6
vm_info = ""

[[adapter.allocation]]
vm_info = "=====vm node info=====\nsize = \u0000 no newline"

[[adapter.allocation]]
device = 6
vm_info = ""
)"))};
    using namespace std::string_literals;
    EXPECT_EQ(driver.read("dri/2/qv/devices/00000005/vm_info"), "2:0: entry\n\0\nSnoop\n"s);
    EXPECT_EQ(driver.read("dri/2/qv/devices/00000005/info"), "pid = x\nhandle = 5\n");
    EXPECT_EQ(driver.read("dri/2/qv/devices/00000006/vm_info"), "");
    EXPECT_EQ(driver.read("dri/2/qv/allocations/1/vm_info"),
              "=====vm node info=====\nsize = \0 no newline"s);
    EXPECT_EQ(driver.read("dri/2/qv/allocations/2/vm_info"), "");
}

TEST(VirtualMemory, VmNodeHasABlockForTheContextOfTheAllocation)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
handle = 0xabc
gpu_virt_addr = 0x100000000

[[adapter.allocation]]
device = 0x20
gpu_virt_addr = "0xnone"
size = "?"
)") + "[[process]]\npid = 4100001\nname = \"/usr/bin/photo viewer\"\n")};
    EXPECT_EQ(driver.read("dri/2/qv/allocations/abc/vm_info"),
              "=====vm node info=====\n"
              "device_pid = 4100001\n"
              "device_pname = photo viewer\n"
              "gpu_va = 100000000\n"
              "size = 40000\n");
    EXPECT_EQ(driver.read("dri/2/qv/allocations/1/vm_info"),
              "=====vm node info=====\n"
              "device_pid = 4100002\n"
              "device_pname = \n"
              "gpu_va = 0xnone\n"
              "size = ?\n");
}

TEST(VirtualMemory, VmNodeIsEmptyWithoutAContext)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
device = "31"
)"))};
    EXPECT_EQ(driver.read("dri/2/qv/allocations/1/vm_info"), "");
}

TEST(VirtualMemory, ContextWithATextForAHandleSeesNothing)
{
    LiveDriver driver{machine_of(adapter("", R"(
[[adapter.context]]
pid = 1
handle = "80000000"

[[adapter.allocation]]
device = "80000000"
)"))};
    EXPECT_EQ(driver.read("dri/2/qv/devices/80000000/vm_info"), "");
    EXPECT_EQ(driver.read("dri/2/qv/devices/80000000/info"), "pid = 1\nhandle = 80000000\n");
}

TEST(VirtualMemory, GeneratedAllocationsAreMapped)
{
    EXPECT_EQ(tables(R"(
[[adapter.shape]]
name = "small"
size = 4096
fb_offset = 0x6000
cpu_visible = 1

[adapter.generated]
allocations = 2
devices = [0x1f]
segments = [8]
)"),
              "0:2: entry addr:10000000, buffer:pt0_2\n"
              "1:1024: entry addr:10001000, buffer:pt1_1024\n"
              "2:524288: entry addr:10002000, buffer:pt2_524288\n"
              "2:0 Snoop:1 Segment:8 LargePage:0 Addr:6000\n"
              "2:2 Snoop:1 Segment:8 LargePage:0 Addr:6000\n");
}

// A clock that stands until it is set.
class VirtualMemoryOverTime : public ::testing::Test {
  protected:
    void after(int count) { now_ = std::chrono::milliseconds{count}; }

    std::atomic<std::chrono::nanoseconds> now_{std::chrono::nanoseconds{0}};
};

TEST_F(VirtualMemoryOverTime, AllocationThatAppearsIsMappedInTheNextDumpOfItsContext)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.shape]]
name = "lost"
size = 4096
fb_offset = 0x1000

[[adapter.leak]]
shape = "lost"
device = 0x20
segment = 2
per_second = 20
)")),
                      [this] { return now_.load(); }};
    const std::string dump = "dri/2/qv/devices/00000020/vm_info";
    const std::string node = "dri/2/qv/allocations/1/vm_info";
    EXPECT_EQ(driver.read(dump), "");
    EXPECT_EQ(driver.read(node), std::nullopt);
    after(50);
    const std::string one =
        "0:2: entry addr:10000000, buffer:pt0_2\n"
        "1:1024: entry addr:10001000, buffer:pt1_1024\n"
        "2:524288: entry addr:10002000, buffer:pt2_524288\n"
        "2:0 Snoop:0 Segment:2 LargePage:0 Addr:1000\n";
    EXPECT_EQ(driver.read(dump), one);
    EXPECT_EQ(driver.read(node),
              "=====vm node info=====\ndevice_pid = 4100002\ndevice_pname = \n"
              "gpu_va = 10000000000\nsize = 1000\n");
    EXPECT_EQ(driver.read("dri/2/qv/devices/0000001f/vm_info"), "");
    after(100);
    EXPECT_EQ(driver.read(dump), one + "2:2 Snoop:0 Segment:2 LargePage:0 Addr:1000\n");
}

TEST_F(VirtualMemoryOverTime, AllocationThatGoesIsMappedNoMore)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.shape]]
name = "any"
size = 4096

[adapter.generated]
allocations = 1
devices = [0x1f]

[adapter.change]
vanish = 1
devices = [0x1f]
)")),
                      [this] { return now_.load(); }};
    const std::string dump = "dri/2/qv/devices/0000001f/vm_info";
    EXPECT_NE(driver.read(dump), "");
    EXPECT_EQ(driver.list("dri/2/qv/allocations").size(), 1U);
    after(1000);
    EXPECT_EQ(driver.read(dump), "");
    EXPECT_TRUE(driver.list("dri/2/qv/allocations").empty());
    EXPECT_EQ(driver.look_up("dri/2/qv/allocations/1"), std::nullopt);
}

}  // namespace
}  // namespace nimba::sim::test
