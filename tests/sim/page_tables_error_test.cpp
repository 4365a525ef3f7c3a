// SPDX-License-Identifier: MIT
// What is wrong with a machine file's virtual memory, in one line.
#include "bad_file.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

class PageTablesError : public ::testing::TestWithParam<BadFile> {};

TEST_P(PageTablesError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

#define CONTEXT GOOD_ADAPTER "[[adapter.context]]\npid = 7\nhandle = 0x11\n"  // lines 6 to 8
#define TABLES(keys) CONTEXT "[adapter.context.page_tables]\n" keys           // from line 10
#define QV                                                              \
    ADAPTER("chip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n") \
    "[[adapter.context]]\npid = 7\nhandle = 0x11\n[[adapter.allocation]]\n"  // lines 2 to 9

// clang-format off
const std::vector<BadFile> kTables{
    {"UnknownKey", TABLES("level3 = 1\n"),
     ":10: key 'adapter[0].context[0].page_tables.level3': unknown key, expected one of \"level0\", "
     "\"level1\", \"level2\", \"entries\", \"large_pages\", \"segments\", \"snooping\""},
    {"NoTable", CONTEXT "page_tables = 3\n",
     ":9: key 'adapter[0].context[0].page_tables': expected a table, got 3"},
    {"NoLevel0", TABLES("level0 = 0\n"),
     ":10: key 'adapter[0].context[0].page_tables.level0': expected a whole number from 1 to 384, "
     "got 0"},
    {"TooMuchOfLevel0", TABLES("level0 = 385\n"),
     ":10: key 'adapter[0].context[0].page_tables.level0': expected a whole number from 1 to 384, "
     "got 385"},
    {"MoreOfLevel1ThanLevel0Holds", TABLES("level0 = 2\nlevel1 = 1025\n"),
     ":11: key 'adapter[0].context[0].page_tables.level1': expected a whole number from 0 to 1024, "
     "got 1025"},
    {"Level2WithoutLevel1", TABLES("level1 = 0\nlevel2 = 1\n"),
     ":11: key 'adapter[0].context[0].page_tables.level2': expected a whole number from 0 to 0, "
     "got 1"},
    {"MoreThanAMillionOfLevel2", TABLES("level0 = 4\nlevel1 = 2048\nlevel2 = 1000001\n"),
     ":12: key 'adapter[0].context[0].page_tables.level2': expected a whole number from 0 to "
     "1000000, got 1000001"},
    {"MoreEntriesThanSmallPagesFit", TABLES("entries = 513\n"),
     ":10: key 'adapter[0].context[0].page_tables.entries': expected a whole number from 0 to 512, "
     "got 513"},
    {"MoreEntriesThanLargePagesFit", TABLES("entries = 33\nlarge_pages = 100\n"),
     ":10: key 'adapter[0].context[0].page_tables.entries': expected a whole number from 0 to 32, "
     "got 33"},
    {"MoreThanAMillionEntries", TABLES("level1 = 8\nlevel2 = 4096\nentries = 1000001\n"),
     ":12: key 'adapter[0].context[0].page_tables.entries': expected a whole number from 0 to "
     "1000000, got 1000001"},
    {"MoreThanAllLarge", TABLES("large_pages = 101\n"),
     ":10: key 'adapter[0].context[0].page_tables.large_pages': expected a whole number from 0 to "
     "100, got 101"},
    {"SnoopingLessThanNever", TABLES("snooping = -1\n"),
     ":10: key 'adapter[0].context[0].page_tables.snooping': expected a whole number from 0 to 100, "
     "got -1"},
    {"NoSegments", TABLES("segments = []\n"),
     ":10: key 'adapter[0].context[0].page_tables.segments': expected at least one segment, got a "
     "list"},
    {"NegativeSegment", TABLES("segments = [0, -1]\n"),
     ":10: key 'adapter[0].context[0].page_tables.segments[1]': expected a whole number from 0 to "
     "65535, got -1"},
};

const std::vector<BadFile> kTexts{
    {"DumpThatIsNoText", CONTEXT "vm_info = 1\n",
     ":9: key 'adapter[0].context[0].vm_info': expected a text, got 1"},
    {"DumpBesidePageTables", CONTEXT "page_tables = {}\nvm_info = \"\"\n",
     ":10: key 'adapter[0].context[0].vm_info': expected no such key beside 'page_tables', got "
     "\"\""},
    {"VmNodeThatIsNoText", CONTEXT "[[adapter.allocation]]\nvm_info = false\n",
     ":10: key 'adapter[0].allocation[0].vm_info': expected a text, got false"},
};

const std::vector<BadFile> kNames{
    {"EntryOnAQvChip", QV "entry = 4\n",
     ":10: key 'adapter[0].allocation[0].entry': expected no such key on a QV chip, which names "
     "allocations by their handles, got 4"},
    {"HandleThatIsNoNameOnAQvChip", QV "handle = \"a b\"\n",
     ":10: key 'adapter[0].allocation[0].handle': expected a number, or a text that can be the name "
     "of a directory, got \"a b\""},
    {"SameNameTwiceOnAQvChip", QV "handle = \"1f\"\n[[adapter.allocation]]\nhandle = 0x1f\n",
     ":12: key 'adapter[0].allocation[1].handle': expected a free allocation directory (1f is that "
     "of adapter[0].allocation[0]), got 31"},
};
// clang-format on

std::string name_of(const ::testing::TestParamInfo<BadFile>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Tables, PageTablesError, ::testing::ValuesIn(kTables), name_of);
INSTANTIATE_TEST_SUITE_P(Texts, PageTablesError, ::testing::ValuesIn(kTexts), name_of);
INSTANTIATE_TEST_SUITE_P(Names, PageTablesError, ::testing::ValuesIn(kNames), name_of);

}  // namespace
}  // namespace nimba::sim::test
