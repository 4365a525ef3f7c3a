// SPDX-License-Identifier: MIT
// What an adapter's clocks and voltage follow.
#include "model_of.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>

namespace nimba::sim::test {
namespace {

using std::chrono::seconds;

// Engine, video and memory clock, and voltage.
std::string clocks(const AdapterModel& model)
{
    std::string text;
    for (const char* node : {"eclk", "vclk", "mclk"}) {
        text += info(model, node);
    }
    const std::string voltage = info(model, "dvfs_clk_voltage");
    text += voltage.substr(voltage.find("gfx_voltage:") + 12);
    return text;
}

TEST(AdapterModelClocks, GoUpAndDownWithTheLoadInAutomaticMode)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(info(model, "dvfs_mode"), "dvfs_mode:0x1\n");
    EXPECT_EQ(clocks(model), "500\n320\n880\n780\n");
    model.advance_to(seconds{5});
    EXPECT_EQ(clocks(model), "650\n410\n1240\n840\n");
    EXPECT_EQ(info(model, "dvfs_clk_voltage"), "gfx_clock:650\ngfx_voltage:840\n");
    model.advance_to(seconds{10});
    EXPECT_EQ(clocks(model), "500\n320\n880\n780\n");
    model.advance_to(seconds{15});
    EXPECT_EQ(clocks(model), "350\n230\n520\n720\n");
    EXPECT_EQ(info(model, "coreclk"), "600\n");
}

TEST(AdapterModelClocks, FollowTheLevel)
{
    AdapterModel model = model_of("");
    ASSERT_EQ(command(model, "dvfs_level", "performance\n"), 0);
    EXPECT_EQ(clocks(model), "660\n400\n1040\n840\n");
    ASSERT_EQ(command(model, "dvfs_level", "lowpower\n"), 0);
    EXPECT_EQ(clocks(model), "380\n240\n560\n740\n");
    ASSERT_EQ(command(model, "dvfs_level", "balance\n"), 0);
    EXPECT_EQ(clocks(model), "500\n320\n880\n780\n");
}

TEST(AdapterModelClocks, AreThoseOfTheLevelInModeTwo)
{
    AdapterModel model = model_of("");
    ASSERT_EQ(command(model, "dvfs_mode", "0x2\n"), 0);
    EXPECT_EQ(clocks(model), "800\n500\n1600\n900\n");
    model.advance_to(seconds{5});
    EXPECT_EQ(clocks(model), "800\n500\n1600\n900\n");
    ASSERT_EQ(command(model, "dvfs_level", "performance\n"), 0);
    EXPECT_EQ(clocks(model), "1200\n700\n2000\n1050\n");
}

TEST(AdapterModelClocks, OfTheEngineStayWhenModeZeroBegins)
{
    AdapterModel model = model_of("");
    ASSERT_EQ(command(model, "dvfs_mode", "0x0\n"), 0);
    model.advance_to(seconds{5});
    EXPECT_EQ(info(model, "dvfs_clk_voltage"), "gfx_clock:500\ngfx_voltage:780\n");
    EXPECT_EQ(info(model, "eclk"), "500\n");
    ASSERT_EQ(command(model, "dvfs_level", "lowpower\n"), 0);
    EXPECT_EQ(clocks(model), "500\n300\n800\n780\n");
    ASSERT_EQ(command(model, "dvfs_clk_voltage", "c 0 1234\n"), 0);
    ASSERT_EQ(command(model, "dvfs_clk_voltage", "v 0 1001\n"), 0);
    ASSERT_EQ(command(model, "dvfs_mode", "0x0\n"), 0);
    EXPECT_EQ(clocks(model), "1234\n300\n800\n1001\n");
}

TEST(AdapterModelClocks, SetByHandHoldUntilTheNextModeOrLevel)
{
    for (const auto& [node, text] :
         std::map<std::string, std::string>{{"dvfs_mode", "0x1\n"}, {"dvfs_level", "balance\n"}}) {
        AdapterModel model = model_of("");
        ASSERT_EQ(command(model, "dvfs_clk_voltage", "c 0 1234\n"), 0);
        ASSERT_EQ(command(model, "dvfs_clk_voltage", "v 0 1001\n"), 0);
        model.advance_to(seconds{5});
        EXPECT_EQ(clocks(model), "1234\n410\n1240\n1001\n");
        ASSERT_EQ(command(model, node, text), 0);
        EXPECT_EQ(clocks(model), "650\n410\n1240\n840\n");
    }
}

TEST(AdapterModelClocks, BeginAsTheMachineFileSays)
{
    const std::string sets =
        "[adapter.clocks]\nmode = MODE\nlevel = \"lowpower\"\ncore = 3\n"
        "idle = { engine = 100, video = 10, memory = 20, voltage = 30 }\n"
        "[adapter.clocks.lowpower]\nengine = 200\nvideo = 110\nmemory = 120\nvoltage = 130\n"
        "[adapter.activity]\nload = 50\nswing = 0\n";
    const auto with_mode = [&](const char* mode) {
        return model_of(std::string{sets}.replace(sets.find("MODE"), 4, mode));
    };
    EXPECT_EQ(clocks(with_mode("1")), "150\n60\n70\n80\n");
    EXPECT_EQ(clocks(with_mode("2")), "200\n110\n120\n130\n");
    AdapterModel manual = with_mode("0");
    EXPECT_EQ(clocks(manual), "200\n110\n120\n130\n");
    EXPECT_EQ(info(manual, "dvfs_mode"), "dvfs_mode:0x0\n");
    EXPECT_EQ(info(manual, "dvfs_level"), "dvfs_level:lowpower\n");
    EXPECT_EQ(info(manual, "coreclk"), "3\n");
    ASSERT_EQ(command(manual, "dvfs_level", "performance\n"), 0);
    EXPECT_EQ(clocks(manual), "200\n700\n2000\n130\n");
}

}  // namespace
}  // namespace nimba::sim::test
