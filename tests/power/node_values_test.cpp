// SPDX-License-Identifier: MIT
// Numbers of the info and the hwmon directory, by index.
#include "adapter_nodes.hpp"
#include "node_journal.hpp"
#include "support/captured_stdout.hpp"

#include <array>
#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>

namespace nimba::test {
namespace {

constexpr std::array<const char*, 35> kNames{"temp1_input",
                                             "fan0_input",
                                             "fan1_input",
                                             "none",
                                             "engine_3d_usage",
                                             "engine_vcp_usage",
                                             "engine_vcp_info",
                                             "engine_vpp_usage",
                                             "fan_speed",
                                             "vbios_version",
                                             "pmp_version",
                                             "release_date",
                                             "driver_version",
                                             "miu_channel_num",
                                             "slice_mask",
                                             "fb_size",
                                             "free_fb_mem",
                                             "eclk",
                                             "vclk",
                                             "mclk",
                                             "enable_perf",
                                             "enable_usage",
                                             "fps_count",
                                             "rxa_blt_scn_cnt",
                                             "misc_ctl_flag",
                                             "power_mode",
                                             "power_case",
                                             "pwm_wait_count",
                                             "dvfs_mode",
                                             "dvfs_control_params",
                                             "dvfs_clk_voltage",
                                             "dvfs_level",
                                             "segment_info",
                                             "coreclk",
                                             "none"};

struct Reading {
    std::int32_t value;
    std::uint32_t bytes;

    bool operator==(const Reading&) const = default;
};

void PrintTo(const Reading& reading, std::ostream* out)
{
    *out << reading.value << " of " << reading.bytes << " bytes";
}

Reading hwmon_value(std::int32_t index)
{
    std::uint32_t bytes = 4242;
    const std::int32_t value = gpuinfo_get_hwmonFD_value_int(index, &bytes);
    return {value, bytes};
}

class NodeValues : public AdapterNodesTest {
  protected:
    // What both functions read of a node with this text.
    Reading value_of(std::string_view text)
    {
        info("eclk", text);
        hwmon("temp1_input", text);
        const Reading reading = hwmon_value(HWMON_NODE_TEMP1_INPUT);
        EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), reading.value);
        return reading;
    }
};

TEST_F(NodeValues, OfTheHwmonDirectoryGoByTheirNamesFirstAndByThoseOfTheInfoDirectoryBehind)
{
    for (int index = 0; index < 35; ++index) {
        const char* name = kNames[static_cast<std::size_t>(index)];
        SCOPED_TRACE(name);
        EXPECT_EQ(hwmon_value(index), (Reading{0, 0}));
        hwmon(name, "77\n");
        EXPECT_EQ(hwmon_value(index), (Reading{77, 3}));
        std::filesystem::remove(adapter_.hwmon().path() / name);
    }
}

TEST_F(NodeValues, OfTheInfoDirectoryGoByTheirNamesFromTheFourthOfAllNamesOn)
{
    for (int index = 0; index < 35; ++index) {
        const char* name = kNames[static_cast<std::size_t>(index)];
        SCOPED_TRACE(name);
        EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(index - 4), 0);
        info(name, "77\n");
        EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(index - 4), 77);
        std::filesystem::remove(adapter_.info().path() / name);
    }
}

TEST_F(NodeValues, StandBehindTheNamesOfTheHeader)
{
    hwmon("temp1_input", "1");
    hwmon("fan0_input", "2");
    hwmon("fan1_input", "3");
    hwmon("none", "4");
    hwmon("engine_3d_usage", "5");
    EXPECT_EQ(hwmon_value(HWMON_NODE_TEMP1_INPUT), (Reading{1, 1}));
    EXPECT_EQ(hwmon_value(HWMON_NODE_FAN0_INPUT), (Reading{2, 1}));
    EXPECT_EQ(hwmon_value(HWMON_NODE_FAN1_INPUT), (Reading{3, 1}));
    EXPECT_EQ(hwmon_value(HWMON_NODE_NONE), (Reading{4, 1}));
    EXPECT_EQ(hwmon_value(4), (Reading{5, 1}));
    info("engine_3d_usage", "6");
    info("eclk", "7");
    info("misc_ctl_flag", "8");
    info("coreclk", "9");
    info("none", "10");
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ENGINE_3D_USAGE), 6);
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), 7);
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MISC_CTL_FLAG), 8);
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_CORECLK), 9);
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_NONE), 10);
}

TEST_F(NodeValues, OfEachDirectoryAreNotLookedForInTheOther)
{
    info("temp1_input", "1");
    info("engine_3d_usage", "2");
    EXPECT_EQ(hwmon_value(0), (Reading{0, 0}));
    EXPECT_EQ(hwmon_value(4), (Reading{0, 0}));
    std::filesystem::remove(adapter_.info().path() / "engine_3d_usage");
    hwmon("engine_3d_usage", "3");
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(0), 0);
}

TEST_F(NodeValues, OutsideTheNamesAreZeroAndNothingIsOpened)
{
    NodeJournal hwmon_journal{adapter_.handles().hwmon_dir_fd};
    for (const int index : {-1, -2, -5, 35, 36, 1000, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(hwmon_value(index), (Reading{0, 0}));
    }
    EXPECT_EQ(hwmon_journal.opened(), Texts{});
    NodeJournal info_journal{adapter_.handles().jw_info_dir_fd};
    for (const int index : {-5, -6, 31, 32, 35, 1000, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(index), 0);
    }
    EXPECT_EQ(info_journal.opened(), Texts{});
}

TEST_F(NodeValues, AreTheDecimalNumberThatBeginsTheText)
{
    EXPECT_EQ(value_of("45\n"), (Reading{45, 3}));
    EXPECT_EQ(value_of("45"), (Reading{45, 2}));
    EXPECT_EQ(value_of("45 *C\n"), (Reading{45, 6}));
    EXPECT_EQ(value_of("-12\n"), (Reading{-12, 4}));
    EXPECT_EQ(value_of("+12\n"), (Reading{12, 4}));
    EXPECT_EQ(value_of("010\n"), (Reading{10, 4}));
    EXPECT_EQ(value_of("0x10\n"), (Reading{0, 5}));
    EXPECT_EQ(value_of(" \t\n 8 9\n"), (Reading{8, 8}));
    EXPECT_EQ(value_of("1.9\n"), (Reading{1, 4}));
    EXPECT_EQ(value_of("2147483647\n"), (Reading{2147483647, 11}));
    EXPECT_EQ(value_of("-2147483648\n"), (Reading{-2147483647 - 1, 12}));
}

TEST_F(NodeValues, AreZeroInATextWithoutANumberButItsBytesCount)
{
    EXPECT_EQ(value_of(""), (Reading{0, 0}));
    EXPECT_EQ(value_of("\n"), (Reading{0, 1}));
    EXPECT_EQ(value_of("none\n"), (Reading{0, 5}));
    EXPECT_EQ(value_of("clock 5\n"), (Reading{0, 8}));
    EXPECT_EQ(value_of("-"), (Reading{0, 1}));
    EXPECT_EQ(value_of("\xff\xfe 3"), (Reading{0, 4}));
    EXPECT_EQ(value_of({"\0005", 2}), (Reading{0, 2}));
}

TEST_F(NodeValues, EndAtANulInTheText)
{
    EXPECT_EQ(value_of({"1\0002\n", 4}), (Reading{1, 4}));
}

TEST_F(NodeValues, AreReadFromTheFirst64BytesAlone)
{
    EXPECT_EQ(value_of(std::string(62, ' ') + "1"), (Reading{1, 63}));
    EXPECT_EQ(value_of(std::string(62, ' ') + "12"), (Reading{12, 64}));
    EXPECT_EQ(value_of(std::string(62, ' ') + "123"), (Reading{12, 64}));
    EXPECT_EQ(value_of(std::string(63, ' ') + "123\n"), (Reading{1, 64}));
    EXPECT_EQ(value_of(std::string(64, ' ') + "123\n"), (Reading{0, 64}));
    EXPECT_EQ(value_of(std::string(5000, ' ') + "123\n"), (Reading{0, 64}));
}

TEST_F(NodeValues, OfANodeThatCannotBeReadAreZero)
{
    std::filesystem::create_directory(adapter_.info().path() / "eclk");
    std::filesystem::create_directory(adapter_.hwmon().path() / "temp1_input");
    EXPECT_EQ(hwmon_value(0), (Reading{0, 0}));
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), 0);
}

TEST_F(NodeValues, OfDirectoriesThatAreNotOpenAreZero)
{
    info("eclk", "5");
    hwmon("temp1_input", "5");
    adapter_.handles().jw_info_dir_fd = -1;
    adapter_.handles().hwmon_dir_fd = -1;
    EXPECT_EQ(hwmon_value(0), (Reading{0, 0}));
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), 0);
}

TEST_F(NodeValues, BeforeAnAdapterIsCurrentAreZero)
{
    pCurrent_gpu_infos = nullptr;
    EXPECT_EQ(hwmon_value(0), (Reading{0, 0}));
    EXPECT_EQ(hwmon_value(35), (Reading{0, 0}));
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), 0);
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(31), 0);
}

TEST_F(NodeValues, FollowTheCurrentAdapter)
{
    info("eclk", "5");
    hwmon("temp1_input", "6");
    adapter_.record().chip_id_idx = 0;
    gpuinfo_select_new_chip(&adapter_.record());
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), 0);
    EXPECT_EQ(hwmon_value(0), (Reading{0, 0}));
    adapter_.record().chip_id_idx = AdapterNodes::kSlot;
    gpuinfo_select_new_chip(&adapter_.record());
    EXPECT_EQ(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK), 5);
    EXPECT_EQ(hwmon_value(0), (Reading{6, 1}));
}

TEST_F(NodeValues, AreReadAnewEachTime)
{
    EXPECT_EQ(value_of("100\n"), (Reading{100, 4}));
    EXPECT_EQ(value_of("2"), (Reading{2, 1}));
    EXPECT_EQ(value_of("x"), (Reading{0, 1}));
    EXPECT_EQ(value_of(""), (Reading{0, 0}));
}

TEST_F(NodeValues, LeaveNoDescriptorOpenAndAreSilent)
{
    info("eclk", "5");
    hwmon("temp1_input", "6");
    const auto descriptors = open_descriptors();
    const std::string output = stdout_of([] {
        for (const int index : {-5, -4, 0, 13, 31, 35}) {
            hwmon_value(index);
            gpuinfo_get_jwinfoFD_value_int(index);
        }
    });
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(output, "");
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
