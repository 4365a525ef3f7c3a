// SPDX-License-Identifier: MIT
// The nodes about video memory: every text, and their order.
#include "driver/live_driver.hpp"
#include "memory_tables.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using Names = std::vector<std::string>;

TEST(MemoryNodes, AllocationIsAPictureWhereTheMachineFileSaysNothing)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
)"))};
    EXPECT_EQ(driver.read("dri/2/jw/allocations/1/info"),
              "handle=1\n"
              "device=31\n"
              "width=256\n"
              "height=256\n"
              "pitch=1024\n"
              "bit_cnt=32\n"
              "secured=0\n"
              "size=262144\n"
              "tile=0\n"
              "cpu_visible=0\n"
              "cache_type=0\n"
              "pool_type=0\n"
              "at_type=0\n"
              "segmentid=0\n"
              "hw_format=0\n"
              "compress_format=0\n"
              "bl_slot_index=0\n"
              "gpu_virt_addr=4294967296\n"
              "imported=0\n"
              "fb_offset=0\n"
              "share=0\n");
}

TEST(MemoryNodes, AllocationShowsEveryValueOfTheMachineFile)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
entry = 70
handle = 0xabc
device = 0x20
width = 1
height = 2
pitch = 3
bit_cnt = 4
secured = 5
size = 6
tile = 7
cpu_visible = 8
cache_type = 9
pool_type = 10
at_type = 11
segmentid = -1
hw_format = 12
compress_format = 13
bl_slot_index = -14
gpu_virt_addr = 9223372036854775807
imported = 15
fb_offset = 16
share = 17
)"))};
    EXPECT_EQ(driver.read("dri/2/jw/allocations/70/info"),
              "handle=abc\ndevice=32\nwidth=1\nheight=2\npitch=3\nbit_cnt=4\nsecured=5\nsize=6\n"
              "tile=7\ncpu_visible=8\ncache_type=9\npool_type=10\nat_type=11\nsegmentid=-1\n"
              "hw_format=12\ncompress_format=13\nbl_slot_index=-14\n"
              "gpu_virt_addr=9223372036854775807\nimported=15\nfb_offset=16\nshare=17\n");
}

TEST(MemoryNodes, TextsOfTheMachineFileAreShownAsTheyAre)
{
    LiveDriver driver{machine_of(adapter("", R"(
[[adapter.context]]
pid = "nobody"
handle = "80000000"

[[adapter.allocation]]
handle = "0xZZ"
device = ""
width = "12abc"
bit_cnt = " 8"
size = "=="
)"))};
    EXPECT_EQ(driver.read("dri/2/jw/allocations/1/info"),
              "handle=0xZZ\ndevice=\nwidth=12abc\nheight=256\npitch=0\nbit_cnt= 8\nsecured=0\n"
              "size===\ntile=0\ncpu_visible=0\ncache_type=0\npool_type=0\nat_type=0\nsegmentid=0\n"
              "hw_format=0\ncompress_format=0\nbl_slot_index=0\ngpu_virt_addr=4294967296\n"
              "imported=0\nfb_offset=0\nshare=0\n");
    EXPECT_EQ(driver.read("dri/2/jw/devices/1/info"), "pid = nobody\nhandle = 80000000\n");
}

TEST(MemoryNodes, DevicesAreInBaseTenForAVaDriverAndInBaseSixteenForALegacyOne)
{
    const std::string memory = std::string{kTwoContexts} + R"(
[[adapter.allocation]]
device = 0x20

[[adapter.shape]]
name = "generated"

[adapter.generated]
allocations = 1
devices = [0x1f]
)";
    const auto device_lines = [&](const std::string& driver_kind) {
        LiveDriver driver{machine_of(adapter("driver = \"" + driver_kind + "\"", memory))};
        std::string lines;
        for (const char* entry : {"1", "2"}) {
            const std::string text =
                driver.read("dri/2/jw/allocations/" + std::string{entry} + "/info").value();
            const std::size_t start = text.find("device=");
            lines += text.substr(start, text.find('\n', start) + 1 - start);
        }
        return lines;
    };
    EXPECT_EQ(device_lines("va"), "device=32\ndevice=31\n");
    EXPECT_EQ(device_lines("legacy"), "device=20\ndevice=1f\n");
}

TEST(MemoryNodes, DeviceContextIsANodeThatEachKindOfDriverNamesInItsWay)
{
    LiveDriver va{machine_of(adapter("", kTwoContexts))};
    EXPECT_EQ(va.list("dri/2/jw/devices"), (Names{"1", "12"}));
    EXPECT_EQ(va.list("dri/2/jw/devices/12"), Names{"info"});
    EXPECT_EQ(va.read("dri/2/jw/devices/1/info"), "pid = 4100001\nhandle = 1f\n");
    EXPECT_EQ(va.read("dri/2/jw/devices/12/info"),
              "pid = 4100002\nhandle = 20\nflags = 0x3\nprocess = a b\n");

    LiveDriver legacy{machine_of(adapter("driver = \"legacy\"", kTwoContexts))};
    EXPECT_EQ(legacy.list("dri/2/jw/devices/12"), Names{"12"});
    EXPECT_EQ(legacy.read("dri/2/jw/devices/1/1"), "pid = 4100001\nhandle = 1f\n");
    EXPECT_EQ(legacy.read("dri/2/jw/devices/12/info"), std::nullopt);
}

TEST(MemoryNodes, GeneratedContextsBelongToTheProcessesInTurn)
{
    const std::string processes =
        "[[process]]\npid = 51\nname = \"a\"\n[[process]]\npid = 52\nname = \"b\"\n";
    LiveDriver driver{machine_of(adapter("", R"(
[[adapter.context]]
entry = 5
pid = 99
handle = 0x1002

[adapter.generated]
contexts = 3
)") + processes)};
    EXPECT_EQ(driver.list("dri/2/jw/devices"), (Names{"5", "6", "7", "8"}));
    EXPECT_EQ(driver.read("dri/2/jw/devices/5/info"), "pid = 99\nhandle = 1002\n");
    EXPECT_EQ(driver.read("dri/2/jw/devices/6/info"), "pid = 51\nhandle = 1001\n");
    EXPECT_EQ(driver.read("dri/2/jw/devices/7/info"), "pid = 52\nhandle = 1003\n");
    EXPECT_EQ(driver.read("dri/2/jw/devices/8/info"), "pid = 51\nhandle = 1004\n");
}

TEST(MemoryNodes, GeneratedContextsBelongToTheProcessIdsOfTheirTable)
{
    LiveDriver driver{machine_of(adapter("", "[adapter.generated]\ncontexts = 1\npids = [77]\n"))};
    EXPECT_EQ(driver.read("dri/2/jw/devices/1/info"), "pid = 77\nhandle = 1001\n");
}

TEST(MemoryNodes, AllocationsAreListedInTheOrderOfTheMachineFileAndGeneratedOnesBehind)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
entry = 9

[[adapter.allocation]]
entry = 3

[[adapter.allocation]]

[[adapter.shape]]
name = "any"

[adapter.generated]
allocations = 3
)"))};
    EXPECT_EQ(driver.list("dri/2/jw/allocations"), (Names{"9", "3", "10", "11", "12", "13"}));
}

TEST(MemoryNodes, HandlesAndAddressesOfAllocationsAreTheirOwn)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
size = 8192

[[adapter.allocation]]
handle = 1

[[adapter.allocation]]

[[adapter.shape]]
name = "any"
size = 5000

[adapter.generated]
allocations = 2
)"))};
    const auto lines = [&](const std::string& entry) {
        const std::string text = driver.read("dri/2/jw/allocations/" + entry + "/info").value();
        const std::size_t start = text.find("gpu_virt_addr=");
        return text.substr(0, text.find('\n') + 1) +
               text.substr(start, text.find('\n', start) - start);
    };
    EXPECT_EQ(lines("1"), "handle=2\ngpu_virt_addr=4294967296");
    EXPECT_EQ(lines("2"), "handle=1\ngpu_virt_addr=4294975488");
    EXPECT_EQ(lines("3"), "handle=3\ngpu_virt_addr=4295237632");
    EXPECT_EQ(lines("4"), "handle=4\ngpu_virt_addr=1099511627776");
    EXPECT_EQ(lines("5"), "handle=5\ngpu_virt_addr=1099511635968");
}

TEST(MemoryNodes, AddressesOfAllocationsBeginAgainBehindTheAddressSpace)
{
    LiveDriver driver{machine_of(adapter("", std::string{kTwoContexts} + R"(
[[adapter.allocation]]
size = 140737488355328

[[adapter.allocation]]
size = 140737488355328

[[adapter.allocation]]
)"))};
    const auto has = [&](const std::string& entry, const std::string& address) {
        const std::string text = driver.read("dri/2/jw/allocations/" + entry + "/info").value();
        return text.find("\ngpu_virt_addr=" + address + "\n") != std::string::npos;
    };
    EXPECT_TRUE(has("1", "4294967296"));
    EXPECT_TRUE(has("2", "140741783322624"));
    EXPECT_TRUE(has("3", "4294967296"));
}

}  // namespace
}  // namespace nimba::sim::test
