// SPDX-License-Identifier: MIT
// The page tables of the machine files that come with nimba-sim.
#include "driver/live_driver.hpp"
#include "machine_file.hpp"
#include "machine_list.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>

namespace nimba::sim::test {
namespace {

// What a node of a shipped machine shows in the beginning.
std::string text_of(const std::string& machine, const std::string& node)
{
    LiveDriver driver{read_machine(find_machine(machine, SHIPPED_MACHINES)),
                      [] { return std::chrono::nanoseconds{0}; }};
    return driver.read("dri/0/qv/" + node).value();
}

int count(const std::string& text, std::string_view part)
{
    int found = 0;
    for (auto place = text.find(part); place != std::string::npos;
         place = text.find(part, place + 1)) {
        ++found;
    }
    return found;
}

TEST(ShippedPageTables, DefaultOneHasAViewerWithFiveAllocations)
{
    EXPECT_EQ(text_of("default", "devices/00000001/info"), "pid = 4100001\nhandle = 1\n");
    EXPECT_EQ(text_of("default", "devices/00000001/vm_info"),
              "0:0: entry addr:10000000, buffer:pt0_0\n"
              "1:4: entry addr:10001000, buffer:pt1_4\n"
              "1:0 Snoop:0 Segment:0 LargePage:1 Addr:1000000\n"
              "1:1 Snoop:0 Segment:0 LargePage:1 Addr:1200000\n"
              "2:2050: entry addr:10002000, buffer:pt2_2050\n"
              "2:0 Snoop:0 Segment:0 LargePage:1 Addr:1400000\n"
              "2:1 Snoop:0 Segment:0 LargePage:1 Addr:1410000\n"
              "2:2 Snoop:0 Segment:0 LargePage:1 Addr:1420000\n"
              "2:3 Snoop:0 Segment:0 LargePage:1 Addr:1430000\n"
              "2:4 Snoop:0 Segment:1 LargePage:1 Addr:1440000\n"
              "2:2051: entry addr:10003000, buffer:pt2_2051\n"
              "2:0 Snoop:1 Segment:1 LargePage:0 Addr:1600000\n"
              "2:1 Snoop:1 Segment:1 LargePage:0 Addr:1601000\n"
              "2:2 Snoop:1 Segment:1 LargePage:0 Addr:1602000\n"
              "2:3 Snoop:1 Segment:1 LargePage:0 Addr:1603000\n"
              "2:4 Snoop:1 Segment:0 LargePage:0 Addr:1604000\n");
    EXPECT_EQ(text_of("default", "allocations/1/vm_info"),
              "=====vm node info=====\ndevice_pid = 4100001\ndevice_pname = viewer\n"
              "gpu_va = 100000000\nsize = 400000\n");
    EXPECT_EQ(text_of("default", "allocations/5/vm_info"),
              "=====vm node info=====\ndevice_pid = 4100001\ndevice_pname = viewer\n"
              "gpu_va = 100604000\nsize = 1000\n");
}

TEST(ShippedPageTables, OneHasAViewerAndAGameWithManyTables)
{
    const std::string game = text_of("page-tables", "devices/00000012/vm_info");
    EXPECT_EQ(count(game, "buffer:pt0_"), 4);
    EXPECT_EQ(count(game, "buffer:pt1_"), 40);
    EXPECT_EQ(count(game, "buffer:pt2_"), 400);
    EXPECT_EQ(count(game, "\n2:0 "), 400);
    EXPECT_EQ(count(game, "Addr:"), 20000);
    const std::string viewer = text_of("page-tables", "devices/00000011/vm_info");
    EXPECT_GT(count(viewer, "Segment:0"), 0);
    EXPECT_GT(count(viewer, "Segment:1"), 0);
    EXPECT_GT(count(viewer, "\n1:"), 1);
    EXPECT_GT(count(viewer, "Snoop:1"), 0);
    EXPECT_EQ(text_of("page-tables", "devices/00000012/info"), "pid = 4100002\nhandle = 12\n");
}

TEST(ShippedPageTables, OneHasAMillionPages)
{
    const std::string text = text_of("million-pages", "devices/00000021/vm_info");
    EXPECT_EQ(count(text, "Addr:"), 1000000);
    EXPECT_EQ(count(text, "entry"), 8 + 64 + 4096);
}

}  // namespace
}  // namespace nimba::sim::test
