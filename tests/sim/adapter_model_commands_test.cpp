// SPDX-License-Identifier: MIT
// The commands that can be written to an adapter's nodes: what each changes, and what is none.
#include "model_of.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace nimba::sim::test {
namespace {

using namespace std::string_literals;

struct Command {
    const char* name;
    const char* node;
    std::string text;
    std::string shown;  // what the node shows then
};

std::ostream& operator<<(std::ostream& stream, const Command& command)
{
    return stream << command.name;
}

class AcceptedCommand : public ::testing::TestWithParam<Command> {};

TEST_P(AcceptedCommand, ChangesWhatItsNodeShows)
{
    AdapterModel model = model_of("");
    EXPECT_NE(info(model, GetParam().node), GetParam().shown);
    EXPECT_EQ(command(model, GetParam().node, GetParam().text), 0);
    EXPECT_EQ(info(model, GetParam().node), GetParam().shown);
}

std::string gating(const std::string& pg_3d, const std::string& cg_3d, const std::string& pg_vcp,
                   const std::string& cg_vcp, const std::string& pg_vpp, const std::string& cg_vpp)
{
    return "pg_3d:0x" + pg_3d + "\ncg_3d:0x" + cg_3d + "\npg_vcp:0x" + pg_vcp + "\ncg_vcp:0x" +
           cg_vcp + "\npg_vpp:0x" + pg_vpp + "\ncg_vpp:0x" + cg_vpp + "\n";
}

const std::vector<Command> kSettings{
    {"PowerMode", "power_mode", "0x3\n", "power_mode:0x3\n"},
    {"PowerModeOfNoBits", "power_mode", "0x0\n", "power_mode:0x0\n"},
    {"PowerModeOfAllBits", "power_mode", "0xffffffff\n", "power_mode:0xffffffff\n"},
    {"DvfsMode0", "dvfs_mode", "0x0\n", "dvfs_mode:0x0\n"},
    {"DvfsMode2", "dvfs_mode", "0x2\n", "dvfs_mode:0x2\n"},
    {"LowPower", "dvfs_level", "lowpower\n", "dvfs_level:lowpower\n"},
    {"Performance", "dvfs_level", "performance\n", "dvfs_level:performance\n"},
    {"LeastClock", "dvfs_clk_voltage", "c 0 100\n", "gfx_clock:100\ngfx_voltage:780\n"},
    {"GreatestClock", "dvfs_clk_voltage", "c 0 2000\n", "gfx_clock:2000\ngfx_voltage:780\n"},
    {"LeastVoltage", "dvfs_clk_voltage", "v 0 600\n", "gfx_clock:500\ngfx_voltage:600\n"},
    {"GreatestVoltage", "dvfs_clk_voltage", "v 0 1300\n", "gfx_clock:500\ngfx_voltage:1300\n"},
    {"MiscFlags", "misc_ctl_flag", "6\n", "6\n"},
    {"MiscFlagsWithTheTopBit", "misc_ctl_flag", "-2147483648\n", "-2147483648\n"},
    {"UsageOn", "enable_usage", "1", "1\n"},
    {"UsageOnWithNewline", "enable_usage", "1\n", "1\n"},
    {"PerfOn", "enable_perf", "1", "1\n"},
};

const std::vector<Command> kGatings{
    {"PowerOf3d", "pwm_wait_count", "0 0 a5\n", gating("a5", "10", "64", "10", "64", "10")},
    {"ClockOf3d", "pwm_wait_count", "1 0 a5\n", gating("64", "a5", "64", "10", "64", "10")},
    {"PowerOfVcp", "pwm_wait_count", "0 1 0\n", gating("64", "10", "0", "10", "64", "10")},
    {"ClockOfVcp", "pwm_wait_count", "1 1 7fff\n", gating("64", "10", "64", "7fff", "64", "10")},
    {"PowerOfVpp", "pwm_wait_count", "0 2 ffff\n", gating("64", "10", "64", "10", "ffff", "10")},
    {"ClockOfVpp", "pwm_wait_count", "1 2 8000\n", gating("64", "10", "64", "10", "64", "8000")},
    {"MinusOne", "pwm_wait_count", "0 0 ffffffff\n", gating("ffff", "10", "64", "10", "64", "10")},
    {"LeastNegative", "pwm_wait_count", "0 0 ffff8000\n",
     gating("8000", "10", "64", "10", "64", "10")},
};

INSTANTIATE_TEST_SUITE_P(Settings, AcceptedCommand, ::testing::ValuesIn(kSettings),
                         [](const auto& row) { return std::string{row.param.name}; });
INSTANTIATE_TEST_SUITE_P(Gatings, AcceptedCommand, ::testing::ValuesIn(kGatings),
                         [](const auto& row) { return std::string{row.param.name}; });

TEST(AdapterModelCommands, ReachEachControlParameter)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(info(model, "dvfs_control_params"),
              "gfx_dvfs_checksize:0x40\ngfx_dvfs_h_threshold:0x50\ngfx_dvfs_l_threshold:0x1e\n"
              "vcp0_dvfs_checksize:0x40\nvcp0_dvfs_h_threshold:0x50\nvcp0_dvfs_l_threshold:0x1e\n"
              "vcp1_dvfs_checksize:0x40\nvcp1_dvfs_h_threshold:0x50\nvcp1_dvfs_l_threshold:0x1e\n"
              "vpp_dvfs_checksize:0x40\nvpp_dvfs_h_threshold:0x50\nvpp_dvfs_l_threshold:0x1e\n");
    for (const char* line :
         {"0 0 a0\n", "1 0 a1\n", "2 0 a2\n", "3 0 a3\n", "0 1 b0\n", "1 1 b1\n", "2 1 b2\n",
          "3 1 b3\n", "0 2 c0\n", "1 2 c1\n", "2 2 0\n", "3 2 ffffffff\n"}) {
        EXPECT_EQ(command(model, "dvfs_control_params", line), 0) << line;
    }
    EXPECT_EQ(info(model, "dvfs_control_params"),
              "gfx_dvfs_checksize:0xa0\ngfx_dvfs_h_threshold:0xb0\ngfx_dvfs_l_threshold:0xc0\n"
              "vcp0_dvfs_checksize:0xa1\nvcp0_dvfs_h_threshold:0xb1\nvcp0_dvfs_l_threshold:0xc1\n"
              "vcp1_dvfs_checksize:0xa2\nvcp1_dvfs_h_threshold:0xb2\nvcp1_dvfs_l_threshold:0x0\n"
              "vpp_dvfs_checksize:0xa3\nvpp_dvfs_h_threshold:0xb3\n"
              "vpp_dvfs_l_threshold:0xffffffff\n");
}

TEST(AdapterModelCommands, GoBackToWhatWasThereBefore)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(command(model, "dvfs_level", "performance\n"), 0);
    EXPECT_EQ(command(model, "dvfs_level", "balance\n"), 0);
    EXPECT_EQ(info(model, "dvfs_level"), "dvfs_level:balance\n");
    EXPECT_EQ(command(model, "enable_usage", "1\n"), 0);
    EXPECT_EQ(command(model, "enable_usage", "0"), 0);
    EXPECT_EQ(info(model, "enable_usage"), "0\n");
    EXPECT_EQ(command(model, "enable_perf", "1"), 0);
    EXPECT_EQ(command(model, "enable_perf", "0\n"), 0);
    EXPECT_EQ(info(model, "enable_perf"), "0\n");
}

// The texts of all nodes of the info directory.
std::vector<std::string> all_texts(const AdapterModel& model)
{
    std::vector<std::string> texts;
    for (const ModelNode& node : model.nodes(NodeDirectory::kInfo)) {
        texts.push_back(info(model, node.name));
    }
    return texts;
}

TEST(AdapterModelCommands, ThatAreMalformedFailAndChangeNothing)
{
    AdapterModel model = model_of("");
    const auto before = all_texts(model);
    const std::vector<std::pair<const char*, std::vector<std::string>>> malformed{
        {"power_mode",
         {"", "\n", "3\n", "0x\n", "0x3", "0x3\n\n", "0x3\n0x4\n", " 0x3\n", "0x3 \n", "0X3\n",
          "0xA\n", "0x03\n", "0x-1\n", "0x+1\n", "0xg\n", "0x100000000\n", "0x3\0\n"s}},
        {"pwm_wait_count", {"",
                            "0 0 \n",
                            "0 0 1",
                            "0 0 1 \n",
                            "0 0  1\n",
                            " 0 0 1\n",
                            "2 0 1\n",
                            "0 3 1\n",
                            "0 0 10000\n",
                            "0 0 ffff7fff\n",
                            "0 0 100000000\n",
                            "0 0 0x1\n",
                            "0 0 A\n",
                            "00 0 1\n",
                            "0 00 1\n",
                            "0 0 -1\n",
                            "0 1\n",
                            "0\t0 1\n",
                            "0 0 01\n",
                            "0 0 1\n0 1 1\n",
                            "a 0 1\n"}},
        {"dvfs_mode", {"", "0\n", "0x3\n", "0xffffffff\n", "0x00\n", "0x0", "0x0\n0x2\n"}},
        {"dvfs_level",
         {"", "\n", "lowpower", "low\n", "lowpower \n", " lowpower\n", "LOWPOWER\n", "lowpower\n\n",
          "lowpower\nperformance\n", "1\n", "dvfs_level:lowpower\n"}},
        {"dvfs_control_params",
         {"", "4 0 1\n", "0 3 1\n", "0 0 100000000\n", "0 0 1", "0 0 0x1\n", "0 0\n", "0 0 1 1\n",
          "0 0 F\n", "-1 0 1\n", "0 0 1\n1 0 1\n"}},
        {"dvfs_clk_voltage",
         {"", "c 0 99\n", "c 0 2001\n", "c 0 -500\n", "v 0 599\n", "v 0 1301\n", "c 1 600\n",
          "v 1 700\n", "c 0 600", "c 0 0600\n", "c 0 +600\n", "c 0 6x\n", "c 0 4294967896\n",
          "C 0 600\n", "c 600\n", "c 0 600\nv 0 700\n", "p 0 600\n", "c 0 \n"}},
        {"misc_ctl_flag",
         {"", "\n", "6", "0x6\n", "06\n", "+6\n", "-0\n", "- 6\n", "2147483648\n", "6\n7\n",
          "6 \n"}},
        {"enable_usage", {"", "\n", "2", "1\n\n", "10", " 1", "1 ", "on", "0x1", "-1", "1\n0\n"}},
        {"enable_perf", {"", "\n", "2", "11", "true"}},
    };
    for (const auto& [node, texts] : malformed) {
        for (const std::string& text : texts) {
            EXPECT_EQ(command(model, node, text), EINVAL) << node << ": " << text;
        }
    }
    EXPECT_EQ(all_texts(model), before);
}

TEST(AdapterModelCommands, AreRefusedByNodesThatOnlyShow)
{
    AdapterModel model = model_of("");
    const auto before = all_texts(model);
    for (const char* node : {"engine_3d_usage", "fan_speed", "driver_version", "fb_size", "eclk",
                             "vclk", "mclk", "coreclk", "fps_count", "segment_info"}) {
        EXPECT_EQ(command(model, node, "1\n"), EACCES) << node;
    }
    EXPECT_EQ(model.write(NodeDirectory::kHwmon, "temp1_input", "1\n"), EACCES);
    EXPECT_EQ(model.write(NodeDirectory::kProc, "", "1\n"), EACCES);
    EXPECT_EQ(all_texts(model), before);
    AdapterModel qv = model_of("", "qv-m30");
    EXPECT_EQ(qv.write(NodeDirectory::kDebug, "heaps/heap_local/info", "1\n"), EACCES);
}

TEST(AdapterModelCommands, HaveNoEffectWhereThereIsNoNode)
{
    AdapterModel model = model_of("");
    EXPECT_EQ(command(model, "none", "1\n"), ENOENT);
    EXPECT_EQ(model.write(NodeDirectory::kHwmon, "dvfs_mode", "0x0\n"), ENOENT);
    EXPECT_EQ(model.write(NodeDirectory::kDebug, "heaps/heap_local/info", "1\n"), ENOENT);
    EXPECT_EQ(model.write(NodeDirectory::kProc, "dvfs_mode", "0x0\n"), ENOENT);
    EXPECT_EQ(info(model, "dvfs_mode"), "dvfs_mode:0x1\n");
}

TEST(AdapterModelCommands, AreBoundedByTheMachineFile)
{
    AdapterModel model = model_of(
        "[adapter.clocks]\nleast_engine = 700\ngreatest_engine = 710\n"
        "least_voltage = 5\ngreatest_voltage = 5\n");
    EXPECT_EQ(command(model, "dvfs_clk_voltage", "c 0 699\n"), EINVAL);
    EXPECT_EQ(command(model, "dvfs_clk_voltage", "c 0 711\n"), EINVAL);
    EXPECT_EQ(command(model, "dvfs_clk_voltage", "c 0 710\n"), 0);
    EXPECT_EQ(command(model, "dvfs_clk_voltage", "v 0 4\n"), EINVAL);
    EXPECT_EQ(command(model, "dvfs_clk_voltage", "v 0 6\n"), EINVAL);
    EXPECT_EQ(command(model, "dvfs_clk_voltage", "v 0 5\n"), 0);
    EXPECT_EQ(info(model, "dvfs_clk_voltage"), "gfx_clock:710\ngfx_voltage:5\n");
}

}  // namespace
}  // namespace nimba::sim::test
