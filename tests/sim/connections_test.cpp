// SPDX-License-Identifier: MIT
// PCIe links and display connectors as programs of a run see them, the real libdrm among them.
#include "sim_run.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::sim::test {
namespace {

// An adapter of each kind, and a foreign GPU.
constexpr const char* kMachine = R"(description = "Connections"
[[adapter]]
chip = "qv-m20"
bus_id = "0000:01:00.0"
card = 3
link_width = 4
link_speed = "2.5 GT/s PCIe\n"
connectors = ["HDMI-A-1", "HDMI-A-2", "Virtual-1"]

[[adapter]]
chip = "nimba-k1"
bus_id = "0000:02:00.0"
card = 4
link_width = "a\u0000\\ b"
link_speed = ""
connectors = []

[[adapter]]
chip = "qv-m30"
bus_id = "0000:03:00.0"
card = 5
link_width = ""
connectors = false

[[adapter]]
chip = "qv-m40"
bus_id = "0000:04:00.0"
card = 6
nodes = ["primary"]
connectors = ["VGA-1"]

[[adapter]]
chip = "nimba-k2"
bus_id = "0000:05:00.0"
card = 7
nodes = ["render"]

[[foreign_gpu]]
vendor = "intel"
device = 0x4680
bus_id = "0000:06:00.0"
card = 8
)";

class Connections : public ::testing::Test {
  protected:
    std::string output_of(const std::string& command_line) const
    {
        return run_on(file_, command_line).output;
    }

    // What the shell says in the directory of the device with that bus number.
    std::string output_in(int bus, const std::string& script) const
    {
        return output_of(
            fmt::format("sh -c 'cd /sys/bus/pci/devices/0000:0{}:00.0; {}'", bus, script));
    }

  private:
    nimba::test::TempDirectory directory_;
    std::string file_ = directory_.write("machine.toml", kMachine);
};

TEST_F(Connections, LinkIsInTwoAttributes)
{
    EXPECT_EQ(output_in(1, "cat current_link_width current_link_speed"), "4\n2.5 GT/s PCIe\n");
    EXPECT_EQ(output_in(4, "cat current_link_width current_link_speed"), "8\n16.0 GT/s PCIe\n");
}

TEST_F(Connections, AttributeHasAnyBytes)
{
    EXPECT_EQ(output_in(2, "od -An -c current_link_width"), "   a  \\0   \\       b\n");
}

TEST_F(Connections, AttributeOfNoTextIsNotThere)
{
    EXPECT_EQ(output_in(2, "ls | grep current"), "current_link_width\n");
    EXPECT_EQ(output_in(3, "ls | grep current"), "current_link_speed\n");
    EXPECT_EQ(output_in(6, "ls | grep current"), "");
}

TEST_F(Connections, ConnectorsAreInTheDirectoryOfTheCard)
{
    EXPECT_EQ(output_in(1, "ls drm; ls drm/card3"),
              "card3\nrenderD131\n"
              "card3-HDMI-A-1\ncard3-HDMI-A-2\ncard3-Virtual-1\ndev\ndevice\nsubsystem\nuevent\n");
    EXPECT_EQ(output_in(1,
                        "grep DEVTYPE drm/card3/card3-Virtual-1/uevent; "
                        "cat drm/card3/card3-Virtual-1/device/dev; "
                        "test -d /sys/class/drm/card3-Virtual-1; echo $?"),
              "DEVTYPE=drm_connector\n226:3\n0\n");
    EXPECT_EQ(output_in(4, "ls drm; ls drm/card6"),
              "card6\ncard6-VGA-1\ndev\ndevice\nsubsystem\nuevent\n");
}

TEST_F(Connections, CardNeedsNoneOrNoDirectory)
{
    EXPECT_EQ(output_in(2, "ls drm; ls drm/card4"),
              "card4\nrenderD132\ndev\ndevice\nsubsystem\nuevent\n");
    EXPECT_EQ(output_in(3, "ls drm"), "minor5\nrenderD133\n");
    EXPECT_EQ(output_in(5, "ls drm"), "renderD135\n");
    EXPECT_EQ(output_in(6, "ls drm; ls drm/card8"),
              "card8\nrenderD136\ndev\ndevice\nsubsystem\nuevent\n");
}

TEST_F(Connections, DoNotMatterToLibdrm)
{
    EXPECT_EQ(output_of("ls /dev/dri | tr '\\n' ' '"),
              "card3 card4 card5 card6 card8 renderD131 renderD132 renderD133 renderD135 "
              "renderD136 ");
    EXPECT_EQ(output_of(LIST_DRM),
              "6 devices\n"
              "pci 0000:01:00.0 5156:2020\n"
              "  /dev/dri/card3: qv 1.0.0, 20240101, Simulated graphics adapter\n"
              "  /dev/dri/renderD131: qv 1.0.0, 20240101, Simulated graphics adapter\n"
              "pci 0000:02:00.0 4e4d:1001\n"
              "  /dev/dri/card4: jw 1.0.0, 20240101, Simulated graphics adapter\n"
              "  /dev/dri/renderD132: jw 1.0.0, 20240101, Simulated graphics adapter\n"
              "pci 0000:03:00.0 5156:2030\n"
              "  /dev/dri/card5: qv 1.0.0, 20240101, Simulated graphics adapter\n"
              "  /dev/dri/renderD133: qv 1.0.0, 20240101, Simulated graphics adapter\n"
              "pci 0000:04:00.0 5156:2040\n"
              "  /dev/dri/card6: qv 1.0.0, 20240101, Simulated graphics adapter\n"
              "pci 0000:05:00.0 4e4d:1002\n"
              "  /dev/dri/renderD135: jw 1.0.0, 20240101, Simulated graphics adapter\n"
              "pci 0000:06:00.0 8086:4680\n"
              "  /dev/dri/card8: i915 1.0.0, 20240101, Simulated graphics adapter\n"
              "  /dev/dri/renderD136: i915 1.0.0, 20240101, Simulated graphics adapter\n");
}

TEST(DefaultConnections, AreWhatProcTells)
{
    EXPECT_EQ(run_on("default",
                     "sh -c 'grep Display /proc/gpuinfo_0 | head -n 2; "
                     "ls /sys/bus/pci/devices/0000:01:00.0/drm/card0 | grep card'")
                  .output,
              "Max Display Port : 3\nSupport Display Type : VGA HDMI DP\n"
              "card0-DP-1\ncard0-HDMI-A-1\ncard0-VGA-1\n");
}

}  // namespace
}  // namespace nimba::sim::test
