// SPDX-License-Identifier: MIT
// What is written to the driver's nodes.
#include "dvfs_fixture.hpp"

#include <algorithm>
#include <vector>

namespace nimba::test {
namespace {

class DvfsWrite : public DvfsTest {
  protected:
    DvfsWrite() { show_empty_nodes(); }

    // What is written before anything was read, for settings that are zero but for these bytes.
    Texts written_for(std::size_t offset, const std::vector<unsigned char>& bytes) const
    {
        StateBytes state{};
        std::copy(bytes.begin(), bytes.end(), state.begin() + static_cast<std::ptrdiff_t>(offset));
        return write(std::bit_cast<DvfsRegisterState>(state));
    }
};

struct Row {
    std::size_t offset;
    std::vector<unsigned char> bytes;
    const char* command;
};

const std::vector<Row> kRows{
    {0, {0x4d, 0x3c, 0x2b, 0x1a}, "power_mode <- 0x1a2b3c4d\n"},
    {4, {0x01, 0x1a}, "pwm_wait_count <- 0 0 1a01\n"},
    {6, {0x02, 0x1a}, "pwm_wait_count <- 1 0 1a02\n"},
    {8, {0x03, 0x1a}, "pwm_wait_count <- 0 1 1a03\n"},
    {10, {0x04, 0x1a}, "pwm_wait_count <- 1 1 1a04\n"},
    {12, {0x05, 0x1a}, "pwm_wait_count <- 0 2 1a05\n"},
    {14, {0x06, 0x1a}, "pwm_wait_count <- 1 2 1a06\n"},
    {16, {0x98, 0xba, 0xdc, 0xfe}, "dvfs_mode <- 0xfedcba98\n"},
    {20, {0x40, 0x30, 0x20, 0x10}, "dvfs_control_params <- 0 0 10203040\n"},
    {24, {0x41, 0x30, 0x20, 0x10}, "dvfs_control_params <- 0 1 10203041\n"},
    {28, {0x42, 0x30, 0x20, 0x10}, "dvfs_control_params <- 0 2 10203042\n"},
    {32, {0x43, 0x30, 0x20, 0x10}, "dvfs_control_params <- 1 0 10203043\n"},
    {36, {0x44, 0x30, 0x20, 0x10}, "dvfs_control_params <- 1 1 10203044\n"},
    {40, {0x45, 0x30, 0x20, 0x10}, "dvfs_control_params <- 1 2 10203045\n"},
    {44, {0x46, 0x30, 0x20, 0x10}, "dvfs_control_params <- 2 0 10203046\n"},
    {48, {0x47, 0x30, 0x20, 0x10}, "dvfs_control_params <- 2 1 10203047\n"},
    {52, {0x48, 0x30, 0x20, 0x10}, "dvfs_control_params <- 2 2 10203048\n"},
    {56, {0x49, 0x30, 0x20, 0x10}, "dvfs_control_params <- 3 0 10203049\n"},
    {60, {0x4a, 0x30, 0x20, 0x10}, "dvfs_control_params <- 3 1 1020304a\n"},
    {64, {0x4b, 0x30, 0x20, 0x10}, "dvfs_control_params <- 3 2 1020304b\n"},
    {68, {0x04, 0x03, 0x02, 0x01}, "dvfs_clk_voltage <- c 0 16909060\n"},
    {84, {0x06, 0x03, 0x02, 0x01}, "dvfs_clk_voltage <- v 0 16909062\n"},
    {104, {0x02, 0x00, 0x00, 0x00}, "dvfs_level <- performance\n"},
};

TEST_F(DvfsWrite, SendsOneCommandForEachFieldThatIsNotZeroBeforeARead)
{
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.command);
        EXPECT_EQ(written_for(row.offset, row.bytes), Texts{row.command});
    }
}

TEST_F(DvfsWrite, SendsNothingForZerosBeforeARead)
{
    EXPECT_EQ(write({}), Texts{});
}

TEST_F(DvfsWrite, SendsReadOnlyClocksAndReservedWordsNever)
{
    for (const std::size_t offset : {72U, 76U, 80U, 88U, 92U, 96U, 100U}) {
        SCOPED_TRACE(offset);
        node("vclk", "");
        node("mclk", "");
        EXPECT_EQ(written_for(offset, {0xff, 0xff, 0xff, 0xff}), Texts{});
    }
}

TEST_F(DvfsWrite, ComparesEveryBitOfAField)
{
    EXPECT_EQ(written_for(3, {0x80}), Texts{"power_mode <- 0x80000000\n"});
    EXPECT_EQ(written_for(5, {0x01}), Texts{"pwm_wait_count <- 0 0 100\n"});
    EXPECT_EQ(written_for(15, {0x01}), Texts{"pwm_wait_count <- 1 2 100\n"});
    EXPECT_EQ(written_for(18, {0x01}), Texts{"dvfs_mode <- 0x10000\n"});
    EXPECT_EQ(written_for(66, {0x01}), Texts{"dvfs_control_params <- 3 2 10000\n"});
    EXPECT_EQ(written_for(70, {0x01}), Texts{"dvfs_clk_voltage <- c 0 65536\n"});
    EXPECT_EQ(written_for(86, {0x01}), Texts{"dvfs_clk_voltage <- v 0 65536\n"});
}

TEST_F(DvfsWrite, SendsNegativeGatingAsEightDigits)
{
    EXPECT_EQ(written_for(4, {0xff, 0xff}), Texts{"pwm_wait_count <- 0 0 ffffffff\n"});
    EXPECT_EQ(written_for(6, {0x00, 0x80}), Texts{"pwm_wait_count <- 1 0 ffff8000\n"});
    EXPECT_EQ(written_for(8, {0xfe, 0xff}), Texts{"pwm_wait_count <- 0 1 fffffffe\n"});
    EXPECT_EQ(written_for(10, {0x34, 0x92}), Texts{"pwm_wait_count <- 1 1 ffff9234\n"});
    EXPECT_EQ(written_for(12, {0x00, 0xff}), Texts{"pwm_wait_count <- 0 2 ffffff00\n"});
    EXPECT_EQ(written_for(14, {0xff, 0x7f}), Texts{"pwm_wait_count <- 1 2 7fff\n"});
}

TEST_F(DvfsWrite, SendsClockAndVoltageAsSignedNumbers)
{
    EXPECT_EQ(written_for(68, {0xff, 0xff, 0xff, 0xff}), Texts{"dvfs_clk_voltage <- c 0 -1\n"});
    EXPECT_EQ(written_for(84, {0x00, 0x00, 0x00, 0x80}),
              Texts{"dvfs_clk_voltage <- v 0 -2147483648\n"});
}

TEST_F(DvfsWrite, SendsTheLargestValues)
{
    const std::vector<unsigned char> ones{0xff, 0xff, 0xff, 0xff};
    EXPECT_EQ(written_for(0, ones), Texts{"power_mode <- 0xffffffff\n"});
    EXPECT_EQ(written_for(16, ones), Texts{"dvfs_mode <- 0xffffffff\n"});
    EXPECT_EQ(written_for(56, ones), Texts{"dvfs_control_params <- 3 0 ffffffff\n"});
}

TEST_F(DvfsWrite, SendsTheCommandsInOrderEachByItself)
{
    DvfsRegisterState state{};
    state.power_mode = 0xa1;
    state.power_gating_3d = 0x11;
    state.clock_gating_3d = 0x12;
    state.power_gating_vcp = 0x13;
    state.clock_gating_vcp = 0x14;
    state.power_gating_vpp = 0x15;
    state.clock_gating_vpp = 0x16;
    state.dvfs_mode = 0xa2;
    state.gfx_check_size = 0x20;
    state.gfx_high_threshold = 0x21;
    state.gfx_low_threshold = 0x22;
    state.vcp0_check_size = 0x30;
    state.vcp0_high_threshold = 0x31;
    state.vcp0_low_threshold = 0x32;
    state.vcp1_check_size = 0x40;
    state.vcp1_high_threshold = 0x41;
    state.vcp1_low_threshold = 0x42;
    state.vpp_check_size = 0x50;
    state.vpp_high_threshold = 0x51;
    state.vpp_low_threshold = 0x52;
    state.gfx_clock = 60;
    state.video_clock = 61;
    state.gfx_voltage = 62;
    state.memory_clock = 63;
    state.dvfs_level = 1;
    const Texts expected{"power_mode <- 0xa1\n",
                         "pwm_wait_count <- 0 0 11\n",
                         "pwm_wait_count <- 0 1 13\n",
                         "pwm_wait_count <- 0 2 15\n",
                         "pwm_wait_count <- 1 0 12\n",
                         "pwm_wait_count <- 1 1 14\n",
                         "pwm_wait_count <- 1 2 16\n",
                         "dvfs_mode <- 0xa2\n",
                         "dvfs_level <- lowpower\n",
                         "dvfs_control_params <- 0 0 20\n",
                         "dvfs_control_params <- 1 0 30\n",
                         "dvfs_control_params <- 2 0 40\n",
                         "dvfs_control_params <- 3 0 50\n",
                         "dvfs_control_params <- 0 1 21\n",
                         "dvfs_control_params <- 1 1 31\n",
                         "dvfs_control_params <- 2 1 41\n",
                         "dvfs_control_params <- 3 1 51\n",
                         "dvfs_control_params <- 0 2 22\n",
                         "dvfs_control_params <- 1 2 32\n",
                         "dvfs_control_params <- 2 2 42\n",
                         "dvfs_control_params <- 3 2 52\n",
                         "dvfs_clk_voltage <- c 0 60\n",
                         "dvfs_clk_voltage <- v 0 62\n"};
    EXPECT_EQ(write(state), expected);
}

TEST_F(DvfsWrite, ReadsNoNode)
{
    DvfsRegisterState state{};
    state.power_mode = 1;
    state.gfx_voltage = 2;
    NodeJournal journal{adapter_.handles().jw_info_dir_fd};
    write_to_nodes(state);
    EXPECT_EQ(journal.opened(), (Texts{"w power_mode", "w dvfs_clk_voltage"}));
}

TEST_F(DvfsWrite, ReachesTheNodesThemselvesWithoutTruncation)
{
    node("power_mode", "power_mode:0x0\n");
    node("dvfs_clk_voltage", "0123456789");
    DvfsRegisterState state{};
    state.power_mode = 2;
    state.gfx_clock = 3;
    write_to_nodes(state);
    EXPECT_EQ(adapter_.info().read("power_mode"), "0x2\nr_mode:0x0\n");
    EXPECT_EQ(adapter_.info().read("dvfs_clk_voltage"), "c 0 3\n6789");
}

TEST_F(DvfsWrite, LeavesTheCallersRecord)
{
    const DvfsRegisterState state = untouched_state();
    write_to_nodes(state);
    EXPECT_EQ(state, untouched_state());
}

}  // namespace
}  // namespace nimba::test
