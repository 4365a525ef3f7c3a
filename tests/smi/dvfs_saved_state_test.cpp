// SPDX-License-Identifier: MIT
#include "dvfs_readings.hpp"
#include "tools/smi/dvfs/saved_state.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::smi {
namespace {

// A file with these members besides the schema.
std::string file_with(const std::string& members)
{
    return R"({"schema": "nimba-smi.dvfs-state.1", )" + members + "}";
}

std::string fault(std::string_view text)
{
    const auto parsed = parse_saved_state(text);
    const auto* const message = std::get_if<std::string>(&parsed);
    return message == nullptr ? "accepted" : *message;
}

TEST(SavedState, HoldsWhatTheDriverGivesAndCanBeWritten)
{
    const DvfsReading reading = reading_of(
        {{"gfx_clock", -800}, {"dvfs_level", 2}, {"power_mode", 31}, {"video_clock", 600}});
    EXPECT_EQ(saved_text({0, "0000:01:00.0", "Gpu0:Nimba-K1"}, {reading.chip, state_of(reading)}),
              R"({
  "schema": "nimba-smi.dvfs-state.1",
  "chip": "0x1001",
  "bus_id": "0000:01:00.0",
  "name": "Gpu0:Nimba-K1",
  "fields": {
    "power_mode": "0x1f",
    "dvfs_level": "performance",
    "gfx_clock": "-800"
  }
}
)");
}

TEST(SavedState, ComesBackInTheOrderOfWriting)
{
    const auto parsed = parse_saved_state(file_with(
        R"("chip": "0x1001", "fields": {"gfx_clock": "-800", "dvfs_level": "2", "power_mode": "0x1f"})"));
    ASSERT_TRUE(std::holds_alternative<SavedState>(parsed));
    const SavedState expected{0x1001,
                              {{find_field("power_mode"), 31},
                               {find_field("dvfs_level"), 2},
                               {find_field("gfx_clock"), -800}}};
    EXPECT_EQ(std::get<SavedState>(parsed), expected);
}

TEST(SavedState, MayBeOfAnUnknownChip)
{
    const auto saved = saved_text({0, "0000:01:00.0", std::nullopt},
                                  {std::nullopt, {{find_field("dvfs_mode"), 1}}});
    const auto parsed = parse_saved_state(saved);
    ASSERT_TRUE(std::holds_alternative<SavedState>(parsed));
    EXPECT_EQ(std::get<SavedState>(parsed).chip, std::nullopt);
}

TEST(SavedState, OfAnotherFormIsRefused)
{
    EXPECT_EQ(fault(""), "it is no JSON document");
    EXPECT_EQ(fault("{"), "it is no JSON document");
    EXPECT_EQ(fault("\xff"), "it is no JSON document");
    EXPECT_EQ(fault(std::string("{\0}", 3)), "it is no JSON document");
    EXPECT_EQ(fault("[]"), "it is no nimba-smi.dvfs-state.1");
    EXPECT_EQ(fault("null"), "it is no nimba-smi.dvfs-state.1");
    EXPECT_EQ(fault("{}"), "it is no nimba-smi.dvfs-state.1");
    EXPECT_EQ(fault(R"({"schema": 1})"), "it is no nimba-smi.dvfs-state.1");
    EXPECT_EQ(fault(R"({"schema": "nimba-smi.dvfs-state.2", "fields": {"dvfs_mode": "1"}})"),
              "it is no nimba-smi.dvfs-state.1");
    EXPECT_EQ(fault(std::string(500'000, '[')), "it is no JSON document");
    EXPECT_EQ(fault(std::string(300'000, '[') + std::string(300'000, ']')),
              "it is no nimba-smi.dvfs-state.1");
}

TEST(SavedState, WithUnknownOrDoubleMembersIsRefused)
{
    EXPECT_EQ(fault(file_with(R"("fields": {"dvfs_mode": "1"}, "extra": 1)")),
              "it has an unknown member \"extra\"");
    EXPECT_EQ(fault(file_with(R"("fields": {"dvfs_mode": "1", "dvfs_mode": "2"})")),
              "it has \"dvfs_mode\" twice");
    EXPECT_EQ(fault(file_with(R"("fields": {"dvfs_mode": "1"}, "fields": {"dvfs_level": "2"})")),
              "it has \"fields\" twice");
    EXPECT_EQ(fault(file_with(R"("name": null, "bus_id": 7, "fields": {"dvfs_mode": "1"})")),
              "accepted");
}

TEST(SavedState, OfNoChipIsRefused)
{
    for (const char* chip : {"4097", "\"K1\"", "\"0x100000000\"", "\"\"", "[]", "true"}) {
        EXPECT_EQ(fault(file_with(std::string{R"("fields": {"dvfs_mode": "1"}, "chip": )"} + chip)),
                  "its \"chip\" is no PCI device identifier")
            << chip;
    }
    EXPECT_EQ(fault(file_with(R"("fields": {"dvfs_mode": "1"}, "chip": null)")), "accepted");
}

TEST(SavedState, WithFieldsThatCannotBeSetIsRefused)
{
    EXPECT_EQ(fault(file_with(R"("chip": "0x1001")")), "it has no \"fields\"");
    EXPECT_EQ(fault(file_with(R"("fields": [])")), "it has no \"fields\"");
    EXPECT_EQ(fault(file_with(R"("fields": {})")), "it has no \"fields\"");
    EXPECT_EQ(fault(file_with(R"("fields": {"dvfs_mode": 1})")),
              "the value of \"dvfs_mode\" is no text");
    EXPECT_EQ(fault(file_with(R"("fields": {"dvfs_mode": {"dvfs_mode": "1"}})")),
              "the value of \"dvfs_mode\" is no text");
    EXPECT_EQ(fault(file_with(R"("fields": {"speed": "1"})")),
              "there is no field \"speed\"; nimba-smi dvfs get shows all");
    EXPECT_EQ(fault(file_with(R"("fields": {"memory_clock": "1"})")),
              "memory_clock can only be read");
    EXPECT_EQ(fault(file_with(R"("fields": {"power_gating_3d": "0x1ffff"})")),
              "power_gating_3d: expected a number from 0 to 0xffff, got \"0x1ffff\"");
}

TEST(SavedState, IsReadFromAFile)
{
    const auto absent = read_saved_state("/nonexistent/state");
    ASSERT_TRUE(std::holds_alternative<std::string>(absent));
    EXPECT_EQ(std::get<std::string>(absent), "No such file or directory");
    const auto directory = read_saved_state("/");
    ASSERT_TRUE(std::holds_alternative<std::string>(directory));
    EXPECT_EQ(std::get<std::string>(directory), "Is a directory");
    const auto endless = read_saved_state("/dev/zero");
    ASSERT_TRUE(std::holds_alternative<std::string>(endless));
    EXPECT_EQ(std::get<std::string>(endless), "it is larger than a megabyte");
    const auto empty = read_saved_state("/dev/null");
    ASSERT_TRUE(std::holds_alternative<std::string>(empty));
    EXPECT_EQ(std::get<std::string>(empty), "it is no JSON document");
}

}  // namespace
}  // namespace nimba::smi
