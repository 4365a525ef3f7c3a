// SPDX-License-Identifier: MIT
// Nodes that are missing or that the driver does not let through.
#include "dvfs_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <filesystem>

namespace nimba::test {
namespace {

class DvfsNodeFailure : public DvfsTest {
  protected:
    // Settings with one command for each node but the last, which has two.
    static DvfsRegisterState one_of_each()
    {
        DvfsRegisterState state{};
        state.power_mode = 1;
        state.clock_gating_3d = 2;
        state.dvfs_mode = 3;
        state.dvfs_level = 2;
        state.vpp_check_size = 5;
        state.gfx_clock = 6;
        state.gfx_voltage = 7;
        return state;
    }
    std::filesystem::path path(const char* name) const { return adapter_.info().path() / name; }
};

TEST_F(DvfsNodeFailure, OfAMissingNodeLosesItsCommandsAlone)
{
    show_empty_nodes();
    remove_node("pwm_wait_count");
    EXPECT_EQ(write(one_of_each()),
              (Texts{"power_mode <- 0x1\n", "dvfs_mode <- 0x3\n", "dvfs_level <- performance\n",
                     "dvfs_control_params <- 3 0 5\n", "dvfs_clk_voltage <- c 0 6\n",
                     "dvfs_clk_voltage <- v 0 7\n"}));
    remove_node("power_mode");
    remove_node("dvfs_clk_voltage");
    EXPECT_EQ(write(one_of_each()), (Texts{"dvfs_mode <- 0x3\n", "dvfs_level <- performance\n",
                                           "dvfs_control_params <- 3 0 5\n"}));
    EXPECT_FALSE(std::filesystem::exists(path("pwm_wait_count")));
}

TEST_F(DvfsNodeFailure, OfEveryNodeCreatesNone)
{
    write_to_nodes(one_of_each());
    read();
    EXPECT_TRUE(std::filesystem::is_empty(adapter_.info().path()));
    EXPECT_TRUE(std::filesystem::is_empty(adapter_.hwmon().path()));
}

TEST_F(DvfsNodeFailure, OfACommandThatTheDriverRejectsIsNotReported)
{
    show_empty_nodes();
    for (const char* name : {"power_mode", "dvfs_control_params"}) {
        remove_node(name);
        std::filesystem::create_symlink("/dev/full", path(name));
    }
    remove_node("dvfs_mode");
    std::filesystem::create_directory(path("dvfs_mode"));
    write_to_nodes(one_of_each());
    EXPECT_EQ(adapter_.info().read("pwm_wait_count"), "1 0 2\n");
    EXPECT_EQ(adapter_.info().read("dvfs_level"), "performance\n");
    EXPECT_EQ(adapter_.info().read("dvfs_clk_voltage"), "v 0 7\n");
}

TEST_F(DvfsNodeFailure, OfAMissingNodeLeavesItsFieldsWhenTheOthersAreRead)
{
    node("power_mode", "power_mode:0x1\n");
    std::filesystem::create_directory(path("dvfs_mode"));
    node("dvfs_control_params", "");
    node("dvfs_clk_voltage", "gfx_voltage:7\n");
    std::filesystem::create_directory(path("vclk"));
    node("mclk", "9\n");
    DvfsRegisterState expected = untouched_state();
    expected.power_mode = 1;
    expected.gfx_voltage = 7;
    expected.video_clock = 0;
    expected.memory_clock = 9;
    EXPECT_EQ(read(untouched_state()), expected);
}

TEST_F(DvfsNodeFailure, LeavesNoDescriptorOpenAndIsSilent)
{
    std::filesystem::create_directory(path("dvfs_mode"));
    std::filesystem::create_symlink("/dev/full", path("dvfs_level"));
    node("power_mode", "power_mode:0x1\n");
    node("vclk", "5\n");
    const auto descriptors = open_descriptors();
    const std::string output = stdout_of([this] {
        DvfsClockInfo clocks{};
        read();
        write_to_nodes(one_of_each());
        function<decltype(get_dvfs_info)>("get_dvfs_info")(&clocks);
    });
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(output, "");
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
