// SPDX-License-Identifier: MIT
// Every way in which a machine file can be wrong, and the one line that says so.
#include "bad_file.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

class MachineError : public ::testing::TestWithParam<BadFile> {};

TEST_P(MachineError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

TEST(MachineFileError, FileThatIsNotThere)
{
    EXPECT_EQ(error_of("/nonexistent/machine.toml"),
              "/nonexistent/machine.toml: cannot be read: No such file or directory");
}

TEST(MachineFileError, WhatIsNoRegularFile)
{
    const nimba::test::TempDirectory directory;
    EXPECT_EQ(error_of(directory.path()), directory.path().string() + ": is not a regular file");
    EXPECT_EQ(error_of("/dev/full"), "/dev/full: is not a regular file");
    const std::string fifo = directory.path() / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(error_of(fifo), fifo + ": is not a regular file");
}

TEST(MachineFileError, FileOfMoreThanAMebibyte)
{
    const nimba::test::TempDirectory directory;
    const std::string head = "description = \"a\"\n#";
    const std::string greatest = head + std::string(1048576 - head.size(), 'x');
    EXPECT_EQ(error_of(directory.write("greatest.toml", greatest)), "(no error)");
    const std::string file = directory.write("larger.toml", greatest + "x");
    EXPECT_EQ(error_of(file), file + ": is larger than 1 MiB");
}

TEST(MachineFileError, ControlCharactersOfTheFileAreShownAsNumbers)
{
    const nimba::test::TempDirectory directory;
    const std::string value = directory.write("value.toml", "description = \"a\"\nx = t\n");
    EXPECT_EQ(error_of(value),
              value + ":2: Error while parsing boolean: expected 'true', saw 't\\u000a'");
    const std::string key = directory.write("key.toml", "description = \"a\"\n\"x\\ny\" = 1\n");
    const std::string beginning = key + ":2: key 'x\\u000ay': unknown key, expected one of ";
    EXPECT_EQ(error_of(key).substr(0, beginning.size()), beginning);
}

TEST(MachineFileError, NodeWithALongPath)
{
    const nimba::test::TempDirectory directory;
    const auto error_of_node = [&](const std::string& path) {
        const std::string file = directory.write(
            "machine.toml",
            "description = \"a\"\n[[adapter]]\nchip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\n"
            "card = 0\n[adapter.info]\n\"" +
                path + "\" = \"\"\n");
        const std::string error = error_of(file);
        return error.starts_with(file) ? error.substr(file.size()) : error;
    };
    const std::string name(255, 'n');
    EXPECT_EQ(error_of_node(name + "/" + name), "(no error)");
    const std::string problem =
        ":7: key 'adapter[0].info': expected a path of 1024 bytes at most, 255 between two \"/\", "
        "got \"";
    EXPECT_EQ(error_of_node("a/" + name + "n/b"), problem + "a/" + name + "n/b\"");
    const std::string deep = name + "/" + name + "/" + name + "/" + name + "/n";
    EXPECT_EQ(error_of_node(deep), problem + deep + "\"");
    const std::string huge(500000, 'n');
    EXPECT_EQ(error_of_node(huge), problem + huge + "\"");
}

#define FOREIGN(keys) "description = \"a\"\n[[foreign_gpu]]\n" keys
#define PROCESS(keys) "description = \"a\"\n[[process]]\n" keys
#define LIBRARY(keys) "description = \"a\"\n[[kernel_interface]]\n" keys

// clang-format off
const std::vector<BadFile> kBadFiles{
    {"Empty", "", ":1: key 'description': expected a text, got nothing"},
    {"EmptyDescription", "description = \"\"\n",
     ":1: key 'description': expected a text, got \"\""},
    {"DescriptionOfTwoLines", "\ndescription = \"a\\nb\"\n",
     ":2: key 'description': expected a text of one line, without control characters, "
     "got \"a\\u000ab\""},
    {"DescriptionWithEscape", "description = \"\\u001b[31mred\"\n",
     ":1: key 'description': expected a text of one line, without control characters, "
     "got \"\\u001b[31mred\""},
    {"DescriptionWithEscapeOfTheSecondSet", "description = \"\\u009b31m\"\n",
     ":1: key 'description': expected a text of one line, without control characters, "
     "got \"\\u009b31m\""},
    {"DescriptionNumber", "description = 1\n",
     ":1: key 'description': expected a text, got 1"},
    {"UnknownKey", "description = \"a\"\ncolour = \"red\"\n",
     ":2: key 'colour': unknown key, expected one of \"description\", \"adapter\", \"foreign_gpu\", "
     "\"platform_device\", \"process\", \"kernel_interface\", \"memory_module\", "
     "\"fault\""},
    {"NotAList", "description = \"a\"\n[adapter]\ncard = 0\n",
     ":2: key 'adapter': expected a list of tables, [[adapter]], got a table"},
    {"ListOfNumbers", "description = \"a\"\nadapter = [1]\n",
     ":2: key 'adapter[0]': expected a table, got 1"},

    {"UnknownAdapterKey", ADAPTER("color = 1\n"),
     ":3: key 'adapter[0].color': unknown key, expected one of "
     "\"chip\", \"vendor\", \"device\", \"bus_id\", \"card\", \"render\", \"nodes\", \"unopenable\", "
     "\"version\", \"driver\", \"debug\", \"info\", \"hwmon\", \"proc\", \"unreadable\", \"missing\", "
     "\"context\", \"allocation\", \"shape\", \"generated\", \"change\", \"leak\", \"clocks\", "
     "\"activity\", \"cooling\", \"board\", \"segment\", \"link_width\", \"link_speed\", "
     "\"connectors\""},
    {"UnknownChip", ADAPTER("chip = \"nimba-k9\"\n"),
     ":3: key 'adapter[0].chip': expected one of \"nimba-k1\", \"nimba-k2\", \"nimba-k3\", "
     "\"nimba-k3t\", \"nimba-k5\", \"nimba-k6\", \"qv-m20\", \"qv-m30\", \"qv-m40\", "
     "got \"nimba-k9\""},
    {"NoIdentity", ADAPTER("card = 0\n"),
     ":2: key 'adapter[0].chip': expected one of \"nimba-k1\", \"nimba-k2\", \"nimba-k3\", "
     "\"nimba-k3t\", \"nimba-k5\", \"nimba-k6\", \"qv-m20\", \"qv-m30\", \"qv-m40\", got nothing"},
    {"DeviceWithoutVendor", ADAPTER("device = 1\n"),
     ":2: key 'adapter[0].vendor': expected one of \"nimba\", \"qv\" or a number, got nothing"},
    {"ChipAndVendor", ADAPTER("chip = \"nimba-k1\"\nvendor = \"nimba\"\n"),
     ":4: key 'adapter[0].vendor': expected no such key beside 'chip', got \"nimba\""},
    {"ChipAndDevice", ADAPTER("chip = \"nimba-k1\"\ndevice = 1\n"),
     ":4: key 'adapter[0].device': expected no such key beside 'chip', got 1"},
    {"UnknownVendorName", ADAPTER("vendor = \"nvidia\"\n"),
     ":3: key 'adapter[0].vendor': expected one of \"nimba\", \"qv\" or a number, got \"nvidia\""},
    {"VendorTooLarge", ADAPTER("vendor = 0x10000\n"),
     ":3: key 'adapter[0].vendor': expected a whole number from 0 to 65535, got 65536"},
    {"ForeignVendorOfAdapter", ADAPTER("vendor = 0x10de\n"),
     ":3: key 'adapter[0].vendor': expected a vendor of the product, \"nimba\" or \"qv\", "
     "got 4318"},
    {"NoDevice", ADAPTER("vendor = \"qv\"\n"),
     ":2: key 'adapter[0].device': expected a whole number from 0 to 65535, got nothing"},
    {"NoBusId", ADAPTER("chip = \"qv-m20\"\n"),
     ":2: key 'adapter[0].bus_id': expected \"dddd:bb:dd.f\", got nothing"},
    {"BadBusId", ADAPTER("chip = \"qv-m20\"\nbus_id = \"01:00.0\"\n"),
     ":4: key 'adapter[0].bus_id': expected \"dddd:bb:dd.f\", got \"01:00.0\""},
    {"BusIdNumber", ADAPTER("chip = \"qv-m20\"\nbus_id = 1\n"),
     ":4: key 'adapter[0].bus_id': expected \"dddd:bb:dd.f\", got 1"},
    {"NoCard", ADAPTER("chip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\n"),
     ":2: key 'adapter[0].card': expected a whole number from 0 to 63, got nothing"},
    {"CardText", ADAPTER("chip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = \"0\"\n"),
     ":5: key 'adapter[0].card': expected a whole number from 0 to 63, got \"0\""},
    {"CardTooLarge", ADAPTER("chip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = 64\n"),
     ":5: key 'adapter[0].card': expected a whole number from 0 to 63, got 64"},
    {"CardNegative", ADAPTER("chip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = -1\n"),
     ":5: key 'adapter[0].card': expected a whole number from 0 to 63, got -1"},
    {"CardFraction", ADAPTER("chip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = 1.5\n"),
     ":5: key 'adapter[0].card': expected a whole number from 0 to 63, got 1.5"},
    {"RenderTooSmall", GOOD_ADAPTER "render = 127\n",
     ":6: key 'adapter[0].render': expected a whole number from 128 to 191, got 127"},
    {"NodesText", GOOD_ADAPTER "nodes = \"primary\"\n",
     ":6: key 'adapter[0].nodes': expected a list of texts, got \"primary\""},
    {"NodesNumber", GOOD_ADAPTER "nodes = [\"primary\", 2]\n",
     ":6: key 'adapter[0].nodes[1]': expected a text, got 2"},
    {"NodesUnknown", GOOD_ADAPTER "nodes = [\"primary\",\n\"secondary\"]\n",
     ":7: key 'adapter[0].nodes[1]': expected one of \"primary\", \"control\", \"render\", "
     "got \"secondary\""},
    {"NodesNone", GOOD_ADAPTER "nodes = []\n",
     ":6: key 'adapter[0].nodes': expected at least one node, got a list"},
    {"UnopenableAbsent", GOOD_ADAPTER "unopenable = [\"control\"]\n",
     ":6: key 'adapter[0].unopenable': expected only nodes that the device has, got a list"},
    {"VersionText", GOOD_ADAPTER "version = \"1.0\"\n",
     ":6: key 'adapter[0].version': expected true or false, got \"1.0\""},
    {"UnknownDriver", GOOD_ADAPTER "driver = \"new\"\n",
     ":6: key 'adapter[0].driver': expected one of \"va\", \"legacy\", \"none\", got \"new\""},
    {"InfoTrue", GOOD_ADAPTER "info = true\n",
     ":6: key 'adapter[0].info': expected a table of texts, or false, got true"},
    {"InfoNumber", GOOD_ADAPTER "[adapter.info]\nenable_usage = 1\n",
     ":7: key 'adapter[0].info.enable_usage': expected a text, got 1"},
    {"NodeOutside", GOOD_ADAPTER "[adapter.hwmon]\n\"../x\" = \"1\"\n",
     ":7: key 'adapter[0].hwmon': expected a path of letters, digits, \"_\", \"-\", \".\", "
     "got \"../x\""},
    {"NodeBelowAnotherNode", GOOD_ADAPTER "[adapter.debug]\na = \"1\"\n\"a-c\" = \"\"\n\"a/b\" = \"2\"\n",
     ":9: key 'adapter[0].debug': expected a path that is not below the file \"a\", got \"a/b\""},
    {"NodeBelowADefaultNode", GOOD_ADAPTER "[adapter.debug]\n\"info/x/y\" = \"1\"\n",
     ":7: key 'adapter[0].debug': expected a path that is not below the file \"info\", "
     "got \"info/x/y\""},
    {"ProcNoText", GOOD_ADAPTER "proc = true\n",
     ":6: key 'adapter[0].proc': expected a text or false, got true"},
    {"UnreadableUnknown", GOOD_ADAPTER "unreadable = [\"info\", \"card0\"]\n",
     ":6: key 'adapter[0].unreadable[1]': expected a directory that the adapter has (\"debug\", "
     "\"info\", \"hwmon\", \"proc\") or a node in it (\"info/enable_usage\"), got \"card0\""},
    {"UnreadableAbsentNode", GOOD_ADAPTER "unreadable = [\"info/fan\"]\n",
     ":6: key 'adapter[0].unreadable[0]': expected a directory that the adapter has (\"debug\", "
     "\"info\", \"hwmon\", \"proc\") or a node in it (\"info/enable_usage\"), got \"info/fan\""},
    {"UnreadableAbsentDirectory", GOOD_ADAPTER "hwmon = false\nunreadable = [\"hwmon\"]\n",
     ":7: key 'adapter[0].unreadable[0]': expected a directory that the adapter has (\"debug\", "
     "\"info\", \"hwmon\", \"proc\") or a node in it (\"info/enable_usage\"), got \"hwmon\""},

    {"UnreadableMissingNode",
     GOOD_ADAPTER "missing = [\"info/eclk\"]\nunreadable = [\"info/eclk\"]\n",
     ":7: key 'adapter[0].unreadable[0]': expected a directory that the adapter has (\"debug\", "
     "\"info\", \"hwmon\", \"proc\") or a node in it (\"info/enable_usage\"), got \"info/eclk\""},
    {"MissingUnknown", GOOD_ADAPTER "missing = [\"info\", \"info/\"]\n",
     ":6: key 'adapter[0].missing[1]': expected a directory that the adapter has (\"debug\", "
     "\"info\", \"hwmon\", \"proc\") or a node in it (\"info/enable_usage\"), got \"info/\""},
    {"MissingPartOfAName", GOOD_ADAPTER "missing = [\"info/enable\"]\n",
     ":6: key 'adapter[0].missing[0]': expected a directory that the adapter has (\"debug\", "
     "\"info\", \"hwmon\", \"proc\") or a node in it (\"info/enable_usage\"), got \"info/enable\""},

    {"CardTwice",
     GOOD_ADAPTER "[[adapter]]\nchip = \"qv-m20\"\nbus_id = \"0000:02:00.0\"\ncard = 0\n",
     ":9: key 'adapter[1].card': expected a free card number (0 is that of adapter[0]), got 0"},
    {"BusIdTwice",
     GOOD_ADAPTER "[[foreign_gpu]]\nvendor = \"amd\"\ndevice = 1\nbus_id = \"0000:01:00.0\"\n",
     ":9: key 'foreign_gpu[0].bus_id': expected a free bus id (0000:01:00.0 is that of "
     "adapter[0]), got \"0000:01:00.0\""},
    {"RenderTwice",
     GOOD_ADAPTER "[[platform_device]]\nname = \"fb\"\ncard = 1\nrender = 128\n",
     ":9: key 'platform_device[0].render': expected a free render number (128 is that of "
     "adapter[0]), got 128"},
    {"RenderTakenFromTheCardNumber",
     GOOD_ADAPTER "render = 129\n[[platform_device]]\nname = \"fb\"\ncard = 1\n",
     ":9: key 'platform_device[0].card': expected a free render number (129 is that of "
     "adapter[0]), got 1"},

    {"UnknownForeignVendor", FOREIGN("vendor = \"nimba\"\n"),
     ":3: key 'foreign_gpu[0].vendor': expected one of \"nvidia\", \"intel\", \"amd\" or a "
     "number, got \"nimba\""},
    {"ForeignDeviceText", FOREIGN("vendor = \"amd\"\ndevice = \"1\"\n"),
     ":4: key 'foreign_gpu[0].device': expected a whole number from 0 to 65535, got \"1\""},
    {"ForeignChip", FOREIGN("chip = \"nimba-k1\"\n"),
     ":3: key 'foreign_gpu[0].chip': unknown key, expected one of \"vendor\", \"device\", "
     "\"bus_id\", \"card\", \"render\", \"nodes\", \"unopenable\", \"version\""},

    {"PlatformNameWithSlash", "description = \"a\"\n[[platform_device]]\nname = \"a/b\"\n",
     ":3: key 'platform_device[0].name': expected a name of letters, digits, \"-\", \".\", "
     "got \"a/b\""},
    {"PlatformNameTooLong",
     "description = \"a\"\n[[platform_device]]\n"
     "name = \"abcdefghijklmnopqrstuvwxyz0123456789abcdefghijklmnopqrstuvwxyz012\"\n",
     ":3: key 'platform_device[0].name': expected a name of 64 letters at most, "
     "got \"abcdefghijklmnopqrstuvwxyz0123456789abcdefghijklmnopqrstuvwxyz012\""},
    {"PlatformNameTwice",
     "description = \"a\"\n[[platform_device]]\nname = \"fb\"\ncard = 0\n"
     "[[platform_device]]\nname = \"fb\"\n",
     ":6: key 'platform_device[1].name': expected a free platform device name (fb is that of "
     "platform_device[0]), got \"fb\""},

    {"PidZero", PROCESS("pid = 0\n"),
     ":3: key 'process[0].pid': expected a whole number from 1 to 4194304, got 0"},
    {"PidTwice", PROCESS("pid = 7\nname = \"a\"\n[[process]]\npid = 7\n"),
     ":6: key 'process[1].pid': expected a free process id (7 is that of process[0]), got 7"},
    {"NoProcessName", PROCESS("pid = 7\n"),
     ":2: key 'process[0].name': expected a text, got nothing"},
    {"CommOfSixteenBytes", PROCESS("pid = 7\ncomm = \"0123456789abcdef\"\n"),
     ":4: key 'process[0].comm': expected a name of 15 bytes at most, without control characters, "
     "got \"0123456789abcdef\""},
    {"CommOfTwoLines", PROCESS("pid = 7\nname = \"a\"\ncomm = \"a\\nb\"\n"),
     ":5: key 'process[0].comm': expected a name of 15 bytes at most, without control characters, "
     "got \"a\\u000ab\""},
    {"KernelThreadWithArguments", PROCESS("pid = 7\ncomm = \"kworker\"\narguments = []\n"),
     ":5: key 'process[0].arguments': expected no such key without 'name', got a list"},
    {"ArgumentsText", PROCESS("pid = 7\nname = \"a\"\narguments = \"-v\"\n"),
     ":5: key 'process[0].arguments': expected a list of texts, got \"-v\""},

    {"UnknownLibrary", LIBRARY("file = \"libc.so.6\"\n"),
     ":3: key 'kernel_interface[0].file': expected one of \"libnimbahwbridge_v2.so.0.0.0\", "
     "\"libmv9hwbridge_v2.so.0.0.0\", \"libdrm_mv9.so.0.0.0\", \"libhwbridge_qv.so.0.0.0\", "
     "got \"libc.so.6\""},
    {"LibraryTwice",
     LIBRARY("file = \"libdrm_mv9.so.0.0.0\"\n[[kernel_interface]]\n"
             "file = \"libdrm_mv9.so.0.0.0\"\n"),
     ":5: key 'kernel_interface[1].file': expected a free file name (libdrm_mv9.so.0.0.0 is that "
     "of kernel_interface[0]), got \"libdrm_mv9.so.0.0.0\""},
    {"UnknownSizeFunction",
     LIBRARY("file = \"libdrm_mv9.so.0.0.0\"\nsize_function = \"size\"\n"),
     ":4: key 'kernel_interface[0].size_function': expected one of \"gfx_get_struct_size\", "
     "\"qv_get_struct_size\", \"none\", got \"size\""},
    {"StructSizeTooLarge",
     LIBRARY("file = \"libdrm_mv9.so.0.0.0\"\nstruct_size = 4294967296\n"),
     ":4: key 'kernel_interface[0].struct_size': expected a whole number from 0 to 4294967295, "
     "got 4294967296"},
    {"UnknownCounter",
     LIBRARY("file = \"libdrm_mv9.so.0.0.0\"\ncounters = [\"qvGetHwqInfo\", \"qv_hwq\"]\n"),
     ":4: key 'kernel_interface[0].counters[1]': expected one of \"gfx_flip_count\", "
     "\"gfx_init_hwinfo\", \"gfx_deinit_hwinfo\", \"gfx_get_hwinfo\", \"gfx_get_hwinfo_ext\", "
     "\"gfx_get_usage_info\", \"gfx_get_usage_info_ext\", \"qv_init_hwinfo\", "
     "\"qv_deinit_hwinfo\", \"qv_get_hwinfo\", \"qvGetHwqInfo\", got \"qv_hwq\""},
    {"CountersText", LIBRARY("file = \"libdrm_mv9.so.0.0.0\"\ncounters = \"none\"\n"),
     ":4: key 'kernel_interface[0].counters': expected a list of texts, got \"none\""},
    {"InitResultTooLarge",
     LIBRARY("file = \"libdrm_mv9.so.0.0.0\"\ninit_result = 2147483648\n"),
     ":4: key 'kernel_interface[0].init_result': expected a whole number from -2147483648 to "
     "2147483647, got 2147483648"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Files, MachineError, ::testing::ValuesIn(kBadFiles),
                         [](const auto& file) { return std::string{file.param.name}; });

TEST(MachineFileError, TextThatIsNotToml)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", "description = \"a\"\n\n[[adapter]\n");
    const std::string message = error_of(file);
    EXPECT_EQ(message.find(file + ":3: Error while parsing"), 0U) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
}

}  // namespace
}  // namespace nimba::sim::test
