// SPDX-License-Identifier: MIT
// What a machine file says of an adapter's PCIe link and of its display connectors.
#include "bad_file.hpp"
#include "machine_of.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

Adapter adapter_of(const std::string& keys)
{
    return machine_of("[[adapter]]\nchip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n" +
                      keys)
        .adapters.at(0);
}

using Names = std::vector<std::string>;

TEST(ConnectionReader, LinkHasDefaults)
{
    const PcieLink link = adapter_of("").link;
    EXPECT_EQ(link.width, "8\n");
    EXPECT_EQ(link.speed, "16.0 GT/s PCIe\n");
}

TEST(ConnectionReader, WidthIsANumberOrATextAsItIs)
{
    EXPECT_EQ(adapter_of("link_width = 0\n").link.width, "0\n");
    EXPECT_EQ(adapter_of("link_width = 65535\n").link.width, "65535\n");
    EXPECT_EQ(adapter_of("link_width = \" x4\"\n").link.width, " x4");
    EXPECT_EQ(adapter_of("link_width = \"a\\u0000b\"\n").link.width, std::string("a\0b", 3));
    EXPECT_EQ(adapter_of("link_width = \"\"\n").link.width, "");
}

TEST(ConnectionReader, SpeedIsATextAsItIs)
{
    EXPECT_EQ(adapter_of("link_speed = \"Unknown\\n\"\n").link.speed, "Unknown\n");
    EXPECT_EQ(adapter_of("link_speed = \"\"\n").link.speed, "");
    EXPECT_EQ(adapter_of("link_speed = \"\"\n").link.width, "8\n");
}

TEST(ConnectionReader, AttributeMayFillAPage)
{
    const std::string page(4096, '9');
    EXPECT_EQ(
        adapter_of("link_width = \"" + page + "\"\nlink_speed = \"" + page + "\"\n").link.width,
        page);
}

TEST(ConnectionReader, ConnectorsAreThoseOfTheDefaultBoard)
{
    EXPECT_EQ(adapter_of("").drm.connectors, (Names{"VGA-1", "HDMI-A-1", "DP-1"}));
    EXPECT_EQ(adapter_of("nodes = [\"render\"]\n").drm.connectors,
              (Names{"VGA-1", "HDMI-A-1", "DP-1"}));
}

TEST(ConnectionReader, ConnectorsAreAListOrNothing)
{
    EXPECT_EQ(adapter_of("connectors = [\"eDP-1\", \"_x.1\"]\n").drm.connectors,
              (Names{"eDP-1", "_x.1"}));
    EXPECT_EQ(adapter_of("connectors = []\n").drm.connectors, Names{});
    EXPECT_EQ(adapter_of("connectors = false\n").drm.connectors, std::nullopt);
    const std::string longest(64, 'D');
    EXPECT_EQ(adapter_of("connectors = [\"" + longest + "\"]\n").drm.connectors, Names{longest});
}

TEST(ConnectionReader, ForeignGpusHaveNoConnectors)
{
    const Machine machine = machine_of(
        "[[foreign_gpu]]\nvendor = \"amd\"\ndevice = 1\nbus_id = \"0000:01:00.0\"\ncard = 0\n");
    EXPECT_EQ(machine.foreign_gpus.at(0).drm.connectors, Names{});
}

class ConnectionError : public ::testing::TestWithParam<BadFile> {};

TEST_P(ConnectionError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

// clang-format off
const std::vector<BadFile> kBadFiles{
    {"WidthNegative", GOOD_ADAPTER "link_width = -1\n",
     ":6: key 'adapter[0].link_width': expected a whole number from 0 to 65535, or a text, got -1"},
    {"WidthTooLarge", GOOD_ADAPTER "link_width = 65536\n",
     ":6: key 'adapter[0].link_width': expected a whole number from 0 to 65535, or a text, "
     "got 65536"},
    {"WidthFlag", GOOD_ADAPTER "link_width = false\n",
     ":6: key 'adapter[0].link_width': expected a whole number from 0 to 65535, or a text, "
     "got false"},
    {"SpeedNumber", GOOD_ADAPTER "link_speed = 8\n",
     ":6: key 'adapter[0].link_speed': expected a text, got 8"},
    {"ConnectorsText", GOOD_ADAPTER "connectors = \"DP-1\"\n",
     ":6: key 'adapter[0].connectors': expected a list of texts, or false, got \"DP-1\""},
    {"ConnectorsTrue", GOOD_ADAPTER "connectors = true\n",
     ":6: key 'adapter[0].connectors': expected a list of texts, or false, got true"},
    {"ConnectorNumber", GOOD_ADAPTER "connectors = [\"DP-1\", 2]\n",
     ":6: key 'adapter[0].connectors[1]': expected a text, got 2"},
    {"ConnectorWithoutName", GOOD_ADAPTER "connectors = [\"\"]\n",
     ":6: key 'adapter[0].connectors[0]': expected a name of letters, digits, \"_\", \"-\", "
     "\".\", 64 at most, got \"\""},
    {"ConnectorElsewhere", GOOD_ADAPTER "connectors = [\"../DP-1\"]\n",
     ":6: key 'adapter[0].connectors[0]': expected a name of letters, digits, \"_\", \"-\", "
     "\".\", 64 at most, got \"../DP-1\""},
    {"ConnectorOfTwoLines", GOOD_ADAPTER "connectors = [\"DP-1\\nP: /x\"]\n",
     ":6: key 'adapter[0].connectors[0]': expected a name of letters, digits, \"_\", \"-\", "
     "\".\", 64 at most, got \"DP-1\\u000aP: /x\""},
    {"ConnectorTwice", GOOD_ADAPTER "connectors = [\"DP-1\", \"DP-2\", \"DP-1\"]\n",
     ":6: key 'adapter[0].connectors[2]': expected a name that no other connector has, "
     "got \"DP-1\""},
    {"ConnectorsWithoutPrimaryNode", GOOD_ADAPTER "nodes = [\"render\"]\nconnectors = []\n",
     ":7: key 'adapter[0].connectors': expected no such key without a primary node, got a list"},
    {"ConnectorsOfAForeignGpu",
     "description = \"a\"\n[[foreign_gpu]]\nconnectors = []\n",
     ":3: key 'foreign_gpu[0].connectors': unknown key, expected one of \"vendor\", \"device\", "
     "\"bus_id\", \"card\", \"render\", \"nodes\", \"unopenable\", \"version\""},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Adapter, ConnectionError, ::testing::ValuesIn(kBadFiles),
                         [](const auto& file) { return std::string{file.param.name}; });

TEST(ConnectionErrors, AttributeOfMoreThanAPage)
{
    const nimba::test::TempDirectory directory;
    const std::string text(4097, '9');
    for (const char* key : {"link_width", "link_speed"}) {
        const std::string file =
            directory.write("bad.toml", fmt::format("{}{} = \"{}\"\n", GOOD_ADAPTER, key, text));
        EXPECT_EQ(error_of(file),
                  fmt::format("{}:6: key 'adapter[0].{}': expected a text of 4096 bytes at most, "
                              "got \"{}\"",
                              file, key, text));
    }
}

TEST(ConnectionErrors, ConnectorWithALongName)
{
    const nimba::test::TempDirectory directory;
    const std::string name(65, 'D');
    const std::string file =
        directory.write("bad.toml", GOOD_ADAPTER "connectors = [\"" + name + "\"]\n");
    EXPECT_EQ(error_of(file),
              file +
                  ":6: key 'adapter[0].connectors[0]': expected a name of letters, digits, \"_\", "
                  "\"-\", \".\", 64 at most, got \"" +
                  name + "\"");
}

}  // namespace
}  // namespace nimba::sim::test
