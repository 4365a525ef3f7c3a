// SPDX-License-Identifier: MIT
// Faults as a machine file tells them.
#include "fault_reader.hpp"

#include "bad_file.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

// The fault's own text, without what is the default.
std::string read_back(const std::string& text)
{
    return to_text(parse_fault(text));
}

TEST(FaultReader, EachKindIsReadWithItsDefaults)
{
    EXPECT_EQ(read_back("kind = \"open\""), "kind = \"open\"\nerror = \"EIO\"\n");
    EXPECT_EQ(read_back("kind = \"read\"\npath = \"info\""),
              "kind = \"read\"\npath = \"info\"\nerror = \"EIO\"\nbytes = 0\n");
    EXPECT_EQ(read_back("kind = \"short\"\npath = \"info\""),
              "kind = \"short\"\npath = \"info\"\nbytes = 1\n");
    EXPECT_EQ(read_back("kind = \"block\"\nms = 20"), "kind = \"block\"\nms = 20\n");
    EXPECT_EQ(read_back("kind = \"garbage\"\npath = \"info\""),
              "kind = \"garbage\"\npath = \"info\"\nbytes = 4096\nseed = 0\n");
    EXPECT_EQ(read_back("kind = \"write\"\npath = \"info\""),
              "kind = \"write\"\npath = \"info\"\nerror = \"EIO\"\n");
    EXPECT_EQ(read_back("kind = \"vanish\"\npath = \"allocations/*\""),
              "kind = \"vanish\"\npath = \"allocations/*\"\n");
    EXPECT_EQ(read_back("kind = \"list\""), "kind = \"list\"\nerror = \"EIO\"\n");
    EXPECT_EQ(read_back("kind = \"gone\""), "kind = \"gone\"\n");
}

TEST(FaultReader, EveryKeyIsKept)
{
    const std::string open =
        "kind = \"open\"\npath = \"devices/*/info\"\nadapter = 3\nerror = \"ENOENT\"\nfirst = 7\n"
        "after_ms = 10\nfor_ms = 20\n";
    EXPECT_EQ(read_back(open), open);
    const std::string list =
        "kind = \"list\"\npath = \"allocations\"\nerror = \"EACCES\"\nentries = 5\nevery = 2\n";
    EXPECT_EQ(read_back(list), list);
    const std::string garbage = "kind = \"garbage\"\npath = \"info\"\nbytes = 10\nseed = 99\n";
    EXPECT_EQ(read_back(garbage), garbage);
    const std::string write =
        "kind = \"write\"\ndirectory = \"info\"\npath = \"dvfs_level\"\nerror = \"EBUSY\"\n"
        "every = 3\n";
    EXPECT_EQ(read_back(write), write);
}

TEST(FaultReader, DirectoryIsThatOfDebugfsIfNothingIsSaid)
{
    EXPECT_EQ(read_back("kind = \"list\"\ndirectory = \"debug\""),
              "kind = \"list\"\nerror = \"EIO\"\n");
    EXPECT_EQ(read_back("kind = \"list\"\ndirectory = \"hwmon\""),
              "kind = \"list\"\ndirectory = \"hwmon\"\nerror = \"EIO\"\n");
    EXPECT_EQ(read_back("kind = \"read\"\ndirectory = \"proc\""),
              "kind = \"read\"\ndirectory = \"proc\"\nerror = \"EIO\"\nbytes = 0\n");
}

TEST(FaultReader, MachineHasItsFaultsInOrder)
{
    const nimba::test::TempDirectory directory;
    const Machine machine = read_machine(directory.write("machine.toml", GOOD_ADAPTER
                                                         "[[fault]]\nkind = \"gone\"\nadapter = 0\n"
                                                         "[[fault]]\nkind = \"list\"\n"));
    ASSERT_EQ(machine.faults.size(), 2U);
    EXPECT_EQ(to_text(machine.faults[0]), "kind = \"gone\"\nadapter = 0\n");
    EXPECT_EQ(to_text(machine.faults[1]), "kind = \"list\"\nerror = \"EIO\"\n");
}

class FaultError : public ::testing::TestWithParam<BadFile> {};

TEST_P(FaultError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

// Lines 1 to 5 are the description and an adapter, line 6 the heading.
#define FAULT(keys) GOOD_ADAPTER "[[fault]]\n" keys

// clang-format off
const std::vector<BadFile> kBadFaults{
    {"UnknownKey", FAULT("node = \"info\"\n"),
     ":7: key 'fault[0].node': unknown key, expected one of \"kind\", \"adapter\", "
     "\"directory\", \"path\", \"error\", \"bytes\", \"entries\", \"ms\", \"seed\", \"first\", \"every\", \"after_ms\", "
     "\"for_ms\""},
    {"NoKind", FAULT("path = \"info\"\n"),
     ":6: key 'fault[0].kind': expected one of \"open\", \"read\", \"short\", \"block\", "
     "\"garbage\", \"write\", \"vanish\", \"list\", \"gone\", got nothing"},
    {"AdapterThatIsNotThere", FAULT("kind = \"gone\"\nadapter = 1\n"),
     ":8: key 'fault[0].adapter': expected the card number of an adapter, got 1"},
    {"PathOutside", FAULT("kind = \"open\"\npath = \"../info\"\n"),
     ":8: key 'fault[0].path': expected a path of 1024 bytes at most, of letters, digits, \"_\", "
     "\"-\", \".\" and \"*\" for a whole name, got \"../info\""},
    {"PathWithStarInAName", FAULT("kind = \"open\"\npath = \"al*/info\"\n"),
     ":8: key 'fault[0].path': expected a path of 1024 bytes at most, of letters, digits, \"_\", "
     "\"-\", \".\" and \"*\" for a whole name, got \"al*/info\""},
    {"ReadWithoutPath", FAULT("kind = \"read\"\n"),
     ":6: key 'fault[0].path': expected the path of a file, got nothing"},
    {"WriteWithoutPath", FAULT("kind = \"write\"\n"),
     ":6: key 'fault[0].path': expected the path of a file, got nothing"},
    {"UnknownDirectory", FAULT("kind = \"open\"\ndirectory = \"sysfs\"\n"),
     ":8: key 'fault[0].directory': expected one of \"debug\", \"info\", \"hwmon\", \"proc\", "
     "got \"sysfs\""},
    {"PathInAFile", FAULT("kind = \"open\"\ndirectory = \"proc\"\npath = \"info\"\n"),
     ":9: key 'fault[0].path': expected no such key beside the directory \"proc\", got \"info\""},
    {"ListOfAFile", FAULT("kind = \"list\"\ndirectory = \"proc\"\n"),
     ":8: key 'fault[0].directory': expected a directory that can be listed, got \"proc\""},
    {"DirectoryOfAWholeDriver", FAULT("kind = \"gone\"\ndirectory = \"info\"\n"),
     ":8: key 'fault[0].directory': expected no such key for a fault \"gone\", got \"info\""},
    {"UnknownError", FAULT("kind = \"open\"\nerror = \"EODD\"\n"),
     ":8: key 'fault[0].error': expected the name of an error, such as \"EIO\" or \"ENOENT\", "
     "got \"EODD\""},
    {"ShortReadsOfNothing", FAULT("kind = \"short\"\npath = \"info\"\nbytes = 0\n"),
     ":9: key 'fault[0].bytes': expected a whole number from 1 to 16777216, got 0"},
    {"BlockWithoutTime", FAULT("kind = \"block\"\n"),
     ":6: key 'fault[0].ms': expected a whole number from 1 to 3600000, got nothing"},
    {"FirstZero", FAULT("kind = \"open\"\nfirst = 0\n"),
     ":8: key 'fault[0].first': expected a whole number from 1 to 1000000000, got 0"},
    {"FirstAndEvery", FAULT("kind = \"open\"\nfirst = 1\nevery = 2\n"),
     ":9: key 'fault[0].every': expected no such key beside 'first', got 2"},
    {"SeedOfAnotherKind", FAULT("kind = \"open\"\nseed = 1\n"),
     ":8: key 'fault[0].seed': expected no such key for a fault \"open\", got 1"},
    {"EntriesNegative", FAULT("kind = \"list\"\nentries = -1\n"),
     ":8: key 'fault[0].entries': expected a whole number from 0 to 1000000000, got -1"},
    {"AfterNegative", FAULT("kind = \"gone\"\nafter_ms = -1\n"),
     ":8: key 'fault[0].after_ms': expected a whole number from 0 to 3600000, got -1"},
    {"NoTime", FAULT("kind = \"gone\"\nfor_ms = 0\n"),
     ":8: key 'fault[0].for_ms': expected a whole number from 1 to 3600000, got 0"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Files, FaultError, ::testing::ValuesIn(kBadFaults),
                         [](const auto& file) { return std::string{file.param.name}; });

}  // namespace
}  // namespace nimba::sim::test
