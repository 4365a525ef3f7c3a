// SPDX-License-Identifier: MIT
// The figures of the machine files that come with nimba-sim for their adapters' power and memory.
#include "driver/adapter_model.hpp"
#include "machine_file.hpp"
#include "machine_list.hpp"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace nimba::sim::test {
namespace {

using std::chrono::seconds;

AdapterModel model_of_shipped(const std::string& machine)
{
    return AdapterModel{read_machine(find_machine(machine, SHIPPED_MACHINES)).adapters.at(0)};
}

std::string heap(const AdapterModel& model, const std::string& name)
{
    return model.read(NodeDirectory::kDebug, "heaps/" + name + "/info").value_or("(no node)");
}

TEST(ShippedAdapters, SteadyOneNeverChangesItsRates)
{
    AdapterModel model = model_of_shipped("steady-adapter");
    ASSERT_EQ(model.write(NodeDirectory::kInfo, "enable_usage", "1"), 0);
    for (const int time : {1, 6, 1001}) {
        model.advance_to(seconds{time});
        const Counters counters = model.counters();
        EXPECT_EQ(counters.flips, 120 * time);
        EXPECT_EQ(counters.time, int64_t{1000000000} * time);
        EXPECT_EQ(model.read(NodeDirectory::kInfo, "rxa_blt_scn_cnt"),
                  std::to_string(120 * time) + "\n");
        EXPECT_EQ(counters.hardware, (std::array<uint32_t, 12>{6000, 5500, 5000, 4500, 4000, 3500,
                                                               3000, 2500, 2000, 1500, 1000, 500}));
        EXPECT_EQ(counters.usage,
                  (std::array<uint32_t, 13>{0, 0, 45, 15, 30, 25, 10, 20, 5, 35, 0, 0, 0}));
        EXPECT_EQ(model.read(NodeDirectory::kInfo, "eclk"), "550\n");
        EXPECT_EQ(model.read(NodeDirectory::kHwmon, "temp1_input"), "50 *C\n");
    }
}

TEST(ShippedAdapters, SevenSegmentsShowsSevenOfThem)
{
    EXPECT_EQ(model_of_shipped("seven-segments").read(NodeDirectory::kInfo, "segment_info"),
              "segment_id:0,total_size:8000000,used_size:1000000\n"
              "segment_id:1,total_size:4000000,used_size:200000\n"
              "segment_id:2,total_size:2000000,used_size:30000\n"
              "segment_id:3,total_size:1000000,used_size:4000\n"
              "segment_id:4,total_size:500000,used_size:50000\n"
              "segment_id:5,total_size:60000,used_size:6000\n"
              "segment_id:6,total_size:7000,used_size:700\n");
}

TEST(ShippedAdapters, OfQvHaveHeapsOfTheirOwn)
{
    const AdapterModel m20 = model_of_shipped("qv-m20-heaps");
    EXPECT_EQ(heap(m20, "heap_invalid"), "Total segment size:  0\nKMD used segment memory:  0\n");
    EXPECT_EQ(heap(m20, "heap_local"),
              "Total segment size:  1073741824\nKMD used segment memory:  134217728\n");
    EXPECT_EQ(heap(m20, "heap_pcie_unsnoop"),
              "Total segment size:  536870912\nKMD used segment memory:  50331648\n");
    EXPECT_EQ(heap(m20, "heap_pcie_snoop"),
              "Total segment size:  268435456\nKMD used segment memory:  8388608\n");
    EXPECT_EQ(heap(model_of_shipped("qv-m30-heaps"), "heap_local"),
              "Total segment size:  2147483648\nKMD used segment memory:  268435456\n");
    EXPECT_EQ(heap(model_of_shipped("qv-m40-heaps"), "heap_local"),
              "Total segment size:  6442450944\nKMD used segment memory:  4831838208\n");
}

}  // namespace
}  // namespace nimba::sim::test
