// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/lost_lines.hpp"
#include "tools/smi/prefer/plan.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

const Preference kMaze{"maze", "/usr/bin/maze", 1, "Gpu0:Nimba-K1", {0, 1, 0, 0}};
const Preference kNewMaze{"maze", "/opt/maze", 2, "Gpu1:QV M-30", {0, 2, 0, 0}};
const Preference kGame{"game", "/usr/bin/game", 1, "Gpu0:Nimba-K1", {0, 1, 0, 0}};

TEST(PreferencePlan, OfSettingAddsBehindTheOthers)
{
    const PreferencePlan plan = plan_setting({kGame}, kMaze);
    EXPECT_EQ(plan.request, "prefer-set");
    EXPECT_EQ(plan.times, 1);
    EXPECT_EQ(plan.preference, kMaze);
    EXPECT_EQ(plan.expected, (std::vector{kGame, kMaze}));
    EXPECT_EQ(plan_setting({}, kMaze).expected, (std::vector{kMaze}));
}

TEST(PreferencePlan, OfSettingReplacesTheFirstOfItsApplication)
{
    EXPECT_EQ(plan_setting({kMaze, kGame, kMaze}, kNewMaze).expected,
              (std::vector{kNewMaze, kGame, kMaze}));
}

TEST(PreferencePlan, OfRemovalTakesAllOfTheApplication)
{
    const auto plan = plan_removal({kMaze, kGame, kNewMaze}, "maze");
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->request, "prefer-remove");
    EXPECT_EQ(plan->times, 2);
    EXPECT_EQ(plan->preference.path, "maze");
    EXPECT_EQ(plan->expected, (std::vector{kGame}));
    EXPECT_EQ(plan_removal({kGame}, "maze"), std::nullopt);
    EXPECT_EQ(plan_removal({}, "maze"), std::nullopt);
}

TEST(PreferenceRequest, TravelsWithEveryByte)
{
    const PreferenceRequest request{
        "/home/\xe9", {"\xe9t\xe9", "/opt/\xff \"x\"", -5, "\x01", {65535, 255, 31, 7}}};
    const std::string text = request_text("prefer-set", request);
    ASSERT_TRUE(text.starts_with("prefer-set {"));
    EXPECT_EQ(preference_request_in(text.substr(11)), request);
    EXPECT_EQ(preference_request_in(""), std::nullopt);
    EXPECT_EQ(preference_request_in("{}"), std::nullopt);
    EXPECT_EQ(preference_request_in("{\"home\": \"x\"}"), std::nullopt);
}

TEST(PreferenceList, TravelsAndComesBack)
{
    const PreferenceList list{{kMaze, kGame}};
    EXPECT_EQ(payload_from<PreferenceList>(to_json_value(list)), list);
    EXPECT_EQ(payload_from<PreferenceList>(to_json_value(PreferenceList{})), PreferenceList{});
    EXPECT_EQ(payload_from<PreferenceList>(nlohmann::json::array()), std::nullopt);
}

constexpr const char* kRewritten =
    "; wmt_gfx_util.ini\n\n[maze]\nFullPath = /usr/bin/maze\nPreferGpuName = Gpu0:Nimba-K1\n"
    "PreferGpuBusID = 0000:01:00.0\nGpuPrefer = 1\n\n\n";

TEST(LostLines, AreNoneWhenTheOrderAndBlanksDiffer)
{
    EXPECT_EQ(lost_lines(kRewritten, kRewritten), 0);
    EXPECT_EQ(lost_lines("", kRewritten), 0);
    EXPECT_EQ(lost_lines("[maze]\r\n  GpuPrefer=1\r\n\r\nPreferGpuBusID   =0000:01:00.0\r\n"
                         "PreferGpuName = Gpu0:Nimba-K1\r\nFullPath = /usr/bin/maze",
                         kRewritten),
              0);
}

TEST(LostLines, AreThoseThatTheLibraryLeavesOut)
{
    EXPECT_EQ(lost_lines("; mine\n[maze]\nGpuPrefer = 1\nColour = red\n", kRewritten), 2);
    EXPECT_EQ(lost_lines("[maze]\nGpuPrefer = 1 ; why\n", kRewritten), 1);
    EXPECT_EQ(lost_lines("[maze]\nGpuPrefer = 0x1\n", kRewritten), 1);
    EXPECT_EQ(lost_lines("[maze]\nGpuPrefer = 1\nGpuPrefer = 1\n", kRewritten), 1);
    EXPECT_EQ(lost_lines("nonsense\n", ""), 1);
}

}  // namespace
}  // namespace nimba::smi
