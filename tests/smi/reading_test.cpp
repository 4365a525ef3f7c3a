// SPDX-License-Identifier: MIT
#include "tools/smi/memory/reading.hpp"

#include "memory_records.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

template <typename Reading>
std::optional<Reading> through_the_channel(const Reading& reading)
{
    return payload_from<Reading>(nlohmann::json::parse(to_json_value(reading).dump()));
}

ReadingBase base()
{
    return {{"0000:01:00.0", {{ExitStatus::kNoPermission, "get_device_pid_maps", "no"}}},
            {{0xFFFFFFFF, 4100001, "maze"}, {16, -1, ""}}};
}

TEST(Reading, MemorySurvivesTheChannel)
{
    MemoryReading reading;
    static_cast<ReadingBase&>(reading) = base();
    int32_t value = -100;
    Allocation record{};
    for (const AllocationField& field : kAllocationFields) {
        record.*field.member = value++;
    }
    reading.allocations = {record, allocation(1, 2, 3)};
    const auto read = through_the_channel(reading);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(static_cast<const ReadingBase&>(*read), base());
    ASSERT_EQ(read->allocations.size(), 2U);
    for (const AllocationField& field : kAllocationFields) {
        EXPECT_EQ(read->allocations[0].*field.member, record.*field.member) << field.name;
    }
    EXPECT_EQ(read->allocations[1].size, 3);
    EXPECT_EQ(through_the_channel(MemoryReading{})->bus_id, std::nullopt);
}

TEST(Reading, LeaksSurviveTheChannel)
{
    LeakReading reading;
    static_cast<ReadingBase&>(reading) = base();
    reading.groups = {{{128, 64, 0x80000000, 28, 1}, 7, {{0xFFFFFFFF, 3}, {16, 1}}}};
    EXPECT_EQ(through_the_channel(reading), reading);
    EXPECT_EQ(through_the_channel(LeakReading{}), LeakReading{});
}

TEST(Reading, OtherShapesAreRefused)
{
    for (const char* const text :
         {"null", "7", "[]", "{}",
          R"({"bus_id":null,"contexts":[],"remarks":[],"allocations":[[1,2]],"groups":[1]})"}) {
        const auto value = nlohmann::json::parse(text);
        EXPECT_FALSE(payload_from<MemoryReading>(value).has_value()) << text;
        EXPECT_FALSE(payload_from<LeakReading>(value).has_value()) << text;
    }
}

}  // namespace
}  // namespace nimba::smi
