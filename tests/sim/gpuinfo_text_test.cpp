// SPDX-License-Identifier: MIT
// The file in /proc of each kind of adapter: what a summary of the adapter is made of.
#include "driver/live_driver.hpp"
#include "machine_file.hpp"
#include "machine_list.hpp"
#include "model_of.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

namespace nimba::sim::test {
namespace {

constexpr std::size_t kReadBytes = 1024;  // by those who make summaries

// What is behind the key in its line; "(no line)" without one.
std::string value(const std::string& text, const std::string& key)
{
    const std::size_t line = ("\n" + text).find("\n" + key);
    if (line == std::string::npos) {
        return "(no line)";
    }
    const std::size_t start = line + key.size();
    return text.substr(start, text.find('\n', start) - start);
}

void expect_board_lines(const std::string& text)
{
    EXPECT_LT(text.size(), kReadBytes);
    EXPECT_EQ(value(text, "Max Display Port : "), "3");
    EXPECT_EQ(value(text, "Support Display Type :"), " VGA HDMI DP");
    EXPECT_EQ(value(text, "Driver Version : "), "1.2.a");
    EXPECT_EQ(value(text, "Firmware Version : "), "8.f.0.1c");
    EXPECT_EQ(value(text, "Firmware Name : "), "Simulated adapter");
    EXPECT_EQ(value(text, "Pixel Fillrate : "), "9600");
    EXPECT_EQ(value(text, "Texture Fillrate : "), "19200");
    EXPECT_EQ(value(text, "HDMI Max Display Resolution : "), "3840 x 2160@60");
    EXPECT_EQ(value(text, "DP Max Display Resolution : "), "7680 x 4320@30");
    EXPECT_EQ(value(text, "VGA Max Display Resolution : "), "1920 x 1080@75");
    EXPECT_EQ(value(text, "Bus Type : PCIE"), "4.0 x8");
}

struct ChipLines {
    const char* chip;
    const char* device_id;
    std::size_t own_memory;    // the segment
    const char* memory_usage;  // with 1 GiB of allocations there
};

void PrintTo(const ChipLines& lines, std::ostream* out)
{
    *out << lines.chip;
}

class GpuinfoText : public ::testing::TestWithParam<ChipLines> {};

TEST_P(GpuinfoText, HasEveryLineOfASummary)
{
    AdapterModel model = model_of("", GetParam().chip);
    const std::string text = model.read(NodeDirectory::kProc, "").value();
    EXPECT_EQ(value(text, "Device ID : "), GetParam().device_id);
    expect_board_lines(text);
}

TEST_P(GpuinfoText, MovesAsTheNodesDo)
{
    AdapterModel model =
        model_of("[adapter.cooling]\nstart = 70\ntime_constant_ms = 3600000\n", GetParam().chip);
    model.set_used(GetParam().own_memory, uint64_t{1} << 30U);
    ASSERT_EQ(command(model, "enable_usage", "1"), 0);
    model.advance_to(std::chrono::seconds{15});
    const std::string text = model.read(NodeDirectory::kProc, "").value();
    EXPECT_EQ(value(text, "Memory Clock Freq : "), "520");
    EXPECT_EQ(info(model, "mclk"), "520\n");
    EXPECT_EQ(value(text, "GPU Use Rate(3d) : "), "10");
    EXPECT_EQ(info(model, "engine_3d_usage"), "10\n");
    EXPECT_EQ(value(text, "GPU Use Rate(video) : "), "5");
    EXPECT_EQ(info(model, "engine_vcp_usage"), "5\n");
    EXPECT_EQ(value(text, "GPU Use Rate(vpp) : "), "3");
    EXPECT_EQ(info(model, "engine_vpp_usage"), "3\n");
    EXPECT_EQ(value(text, "Realtime Temperature : "), "70");
    EXPECT_EQ(hwmon(model, "temp1_input"), "70 *C\n");
    EXPECT_EQ(value(text, "GPU Memory Usage : "), GetParam().memory_usage);
}

// The adapter's own memory has 4 GiB, of which 256 MiB are in use, or 2 GiB, and 64 MiB.
INSTANTIATE_TEST_SUITE_P(Chips, GpuinfoText,
                         ::testing::Values(ChipLines{"nimba-k1", "1001", 0, "31"},
                                           ChipLines{"nimba-k6", "1006", 0, "31"},
                                           ChipLines{"qv-m20", "2020", 1, "53"},
                                           ChipLines{"qv-m30", "2030", 1, "53"},
                                           ChipLines{"qv-m40", "2040", 1, "53"}),
                         [](const auto& chip) {
                             std::string name = chip.param.chip;
                             std::erase(name, '-');
                             return name;
                         });

TEST(GpuinfoOfTheDefaultMachine, HasEveryLineAndFollowsTheNodes)
{
    std::chrono::nanoseconds now{0};
    LiveDriver driver{read_machine(find_machine("default", SHIPPED_MACHINES)), [&] { return now; }};
    ASSERT_EQ(driver.write("info/0/enable_usage", "1"), 0);
    now = std::chrono::seconds{5};
    const std::string text = driver.read("proc/gpuinfo_0").value();
    expect_board_lines(text);
    EXPECT_EQ(value(text, "Device ID : "), "1001");
    EXPECT_EQ(value(text, "Memory Clock Freq : "), "1240");
    EXPECT_EQ(driver.read("info/0/mclk"), "1240\n");
    EXPECT_EQ(value(text, "GPU Use Rate(3d) : "), "70");
    EXPECT_EQ(driver.read("info/0/engine_3d_usage"), "70\n");
    EXPECT_EQ(value(text, "Realtime Temperature : "), "48");
    EXPECT_EQ(driver.read("hwmon/0/hwmon0/temp1_input"), "48 *C\n");
}

}  // namespace
}  // namespace nimba::sim::test
