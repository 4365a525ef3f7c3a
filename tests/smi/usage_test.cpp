// SPDX-License-Identifier: MIT
#include "tools/smi/ps/usage.hpp"

#include "memory_records.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

std::vector<uint32_t> devices(const UsageTable& table)
{
    std::vector<uint32_t> result;
    for (const DeviceUsage& device : table.devices) {
        result.push_back(device.device);
    }
    return result;
}

TEST(UsageTable, SumsSegmentsIn64Bits)
{
    MemorySnapshot snapshot;
    snapshot.adapters = {
        memory_of(kFirstSlot,
                  {allocation(1, 16, 0xFFFFFFFF, 0), allocation(2, 16, 0xFFFFFFFF, 0),
                   allocation(3, 16, 1, 3), allocation(4, 16, 2, 4), allocation(5, 16, 4, 900),
                   allocation(6, 16, 8, -1)},
                  {})};
    const UsageTable table = usage_table(snapshot, std::nullopt);
    ASSERT_EQ(table.devices.size(), 1U);
    EXPECT_EQ(table.devices[0].usage, (Usage{6, {8589934590, 0, 0, 1, 6, 8}, 8589934605}));
    EXPECT_EQ(table.total, table.devices[0].usage);
    EXPECT_TRUE(table.devices[0].processes.empty());
}

TEST(UsageTable, HasContextsWithoutAllocationsAndAllocationsWithoutContexts)
{
    MemorySnapshot snapshot;
    snapshot.adapters = {memory_of(kFirstSlot, {allocation(1, 30, 5)}, {{16, 7, "a"}})};
    const UsageTable table = usage_table(snapshot, std::nullopt);
    ASSERT_EQ(devices(table), (std::vector<uint32_t>{30, 16}));
    EXPECT_EQ(table.devices[1],
              (DeviceUsage{0, "0000:01:00.0", 16, {{7, "a"}}, {0, {0, 0, 0, 0, 0, 0}, 0}}));
}

TEST(UsageTable, ComesLargestFirstAndTheTotalIsWhole)
{
    MemorySnapshot snapshot;
    snapshot.adapters = {
        memory_of(kFirstSlot, {allocation(1, 3, 10), allocation(2, 1, 20), allocation(3, 2, 20)},
                  {}),
        memory_of(kSecondSlot, {allocation(1, 1, 30)}, {})};
    EXPECT_EQ(devices(usage_table(snapshot, std::nullopt)), (std::vector<uint32_t>{1, 1, 2, 3}));
    const UsageTable top = usage_table(snapshot, 1);
    ASSERT_EQ(top.devices.size(), 1U);
    EXPECT_EQ(top.devices[0].slot, 1);
    EXPECT_EQ(top.total.bytes, 80U);
    EXPECT_EQ(top.total.allocations, 4U);
}

}  // namespace
}  // namespace nimba::smi
