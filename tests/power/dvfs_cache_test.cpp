// SPDX-License-Identifier: MIT
// What a write compares with: the state that was last read.
#include "dvfs_fixture.hpp"

namespace nimba::test {
namespace {

class DvfsCache : public DvfsTest {
  protected:
    DvfsCache()
    {
        show_empty_nodes();
        node("power_mode", "power_mode:0x3\n");
        node("pwm_wait_count", "pg_3d:0xffff\ncg_vpp:0x2\n");
        node("dvfs_control_params", "vcp0_dvfs_h_threshold:0x21\n");
        node("dvfs_clk_voltage", "gfx_clock:800\ngfx_voltage:-900\n");
        node("dvfs_level", "dvfs_level:performance\n");
    }
};

TEST_F(DvfsCache, IsZeroAtLoad)
{
    DvfsRegisterState state{};
    EXPECT_EQ(write(state), Texts{});
    state.dvfs_mode = 1;
    EXPECT_EQ(write(state), Texts{"dvfs_mode <- 0x1\n"});
}

TEST_F(DvfsCache, HoldsWhatWasReadSoThatItIsNotWrittenBack)
{
    EXPECT_EQ(write(read()), Texts{});
}

TEST_F(DvfsCache, HoldsEachField)
{
    read();
    const Texts expected{"power_mode <- 0x0\n",
                         "pwm_wait_count <- 0 0 0\n",
                         "pwm_wait_count <- 1 2 0\n",
                         "dvfs_level <- balance\n",
                         "dvfs_control_params <- 1 1 0\n",
                         "dvfs_clk_voltage <- c 0 0\n",
                         "dvfs_clk_voltage <- v 0 0\n"};
    EXPECT_EQ(write({}), expected);
}

TEST_F(DvfsCache, SkipsAllButTheFieldsThatDiffer)
{
    DvfsRegisterState state = read();
    state.clock_gating_vpp = 5;
    state.gfx_clock = 801;
    EXPECT_EQ(write(state), (Texts{"pwm_wait_count <- 1 2 5\n", "dvfs_clk_voltage <- c 0 801\n"}));
}

TEST_F(DvfsCache, IsNotChangedByAWrite)
{
    const DvfsRegisterState was_read = read();
    DvfsRegisterState changed = was_read;
    changed.power_mode = 1;
    EXPECT_EQ(write(changed), Texts{"power_mode <- 0x1\n"});
    EXPECT_EQ(write(changed), Texts{"power_mode <- 0x1\n"});
    EXPECT_EQ(write(was_read), Texts{});
    EXPECT_EQ(write(changed), Texts{"power_mode <- 0x1\n"});
}

TEST_F(DvfsCache, FollowsTheNextRead)
{
    DvfsRegisterState state = read();
    node("power_mode", "power_mode:0x1\n");
    state.power_mode = 1;
    EXPECT_EQ(write(state), Texts{"power_mode <- 0x1\n"});
    read();
    EXPECT_EQ(write(state), Texts{});
    state.power_mode = 3;
    EXPECT_EQ(write(state), Texts{"power_mode <- 0x3\n"});
}

TEST_F(DvfsCache, HoldsWhatTheCallerHadInFieldsThatCouldNotBeRead)
{
    DvfsRegisterState state{};
    state.dvfs_mode = 5;
    state.vpp_low_threshold = 6;
    state = read(state);
    EXPECT_EQ(write(state), Texts{});
    state.dvfs_mode = 0;
    state.vpp_low_threshold = 0;
    EXPECT_EQ(write(state), (Texts{"dvfs_mode <- 0x0\n", "dvfs_control_params <- 3 2 0\n"}));
}

TEST_F(DvfsCache, IsACopyThatTheCallersRecordDoesNotChange)
{
    std::uint32_t valid = 0;
    DvfsRegisterState state{};
    function<decltype(get_data_from_dvfs_register)>("get_data_from_dvfs_register")(&state, &valid);
    state.power_mode = 9;
    EXPECT_EQ(write(state), Texts{"power_mode <- 0x9\n"});
}

TEST_F(DvfsCache, IsFilledAndComparedWithByTheWorkersAsWell)
{
    DvfsRegisterState state{};
    EXPECT_EQ(function<decltype(gpuinfo_get_data_from_dvfs_register)>(
                  "gpuinfo_get_data_from_dvfs_register")(&state),
              0);
    EXPECT_EQ(write(state), Texts{});
    state.power_gating_3d = 1;
    NodeJournal journal{adapter_.handles().jw_info_dir_fd};
    EXPECT_EQ(function<decltype(gpuinfo_set_data_to_dvfs_register)>(
                  "gpuinfo_set_data_to_dvfs_register")(&state),
              0);
    EXPECT_EQ(journal.written(), Texts{"pwm_wait_count <- 0 0 1\n"});
}

TEST_F(DvfsCache, IsKeptByTheEndOfTheLibrarysUse)
{
    const DvfsRegisterState state = read();
    function<decltype(gfx_global_exit)>("gfx_global_exit")(0);
    EXPECT_EQ(write(state), Texts{});
}

TEST_F(DvfsCache, IsOneForAllAdapters)
{
    const DvfsRegisterState state = read();
    adapter_.handles().jw_info_dir_fd = adapter_.handles().hwmon_dir_fd;
    for (const char* name : {"power_mode", "pwm_wait_count", "dvfs_mode"}) {
        adapter_.hwmon().write(name, "");
    }
    EXPECT_EQ(write(state), Texts{});
}

}  // namespace
}  // namespace nimba::test
