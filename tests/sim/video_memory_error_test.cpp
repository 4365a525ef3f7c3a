// SPDX-License-Identifier: MIT
// Every way in which the description of video memory can be wrong.
#include "bad_file.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

class VideoMemoryError : public ::testing::TestWithParam<BadFile> {};

TEST_P(VideoMemoryError, IsOneLineWithPlaceKeyAndExpectation)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("bad.toml", GetParam().text);
    EXPECT_EQ(error_of(file), file + GetParam().message);
}

#define CONTEXT(keys) GOOD_ADAPTER "[[adapter.context]]\n" keys        // from line 6
#define GOOD_CONTEXT CONTEXT("pid = 7\nhandle = 17\n")                 // lines 6 to 8
#define ALLOCATION(keys) GOOD_CONTEXT "[[adapter.allocation]]\n" keys  // from line 9
#define SHAPE(keys) GOOD_CONTEXT "[[adapter.shape]]\n" keys            // from line 9
#define GOOD_SHAPE SHAPE("name = \"s\"\n")                             // lines 9 and 10
#define GENERATED(keys) GOOD_SHAPE "[adapter.generated]\n" keys        // from line 11
#define CHANGE(keys) GOOD_SHAPE "[adapter.change]\n" keys
#define LEAK(keys) GOOD_SHAPE "[[adapter.leak]]\n" keys

// clang-format off
const std::vector<BadFile> kContexts{
    {"UnknownContextKey", CONTEXT("tid = 7\n"),
     ":7: key 'adapter[0].context[0].tid': unknown key, expected one of \"entry\", \"pid\", "
     "\"handle\", \"further\", \"vm_info\", \"page_tables\""},
    {"ContextWithoutPid", CONTEXT("handle = 1\n"),
     ":6: key 'adapter[0].context[0].pid': expected a whole number from 1 to 4194304, or a text, "
     "got nothing"},
    {"ContextOfPidZero", CONTEXT("pid = 0\n"),
     ":7: key 'adapter[0].context[0].pid': expected a whole number from 1 to 4194304, or a text, "
     "got 0"},
    {"ContextOfPidWithTwoLines", CONTEXT("pid = \"1\\n2\"\n"),
     ":7: key 'adapter[0].context[0].pid': expected a number, or a text of one line, without "
     "control characters, got \"1\\u000a2\""},
    {"ContextWithoutHandle", CONTEXT("pid = 7\n"),
     ":6: key 'adapter[0].context[0].handle': expected a whole number from 0 to 2147483647, or a "
     "text, got nothing"},
    {"ContextHandleTooLarge", CONTEXT("pid = 7\nhandle = 2147483648\n"),
     ":8: key 'adapter[0].context[0].handle': expected a whole number from 0 to 2147483647, or a "
     "text, got 2147483648"},
    {"ContextHandleTwice", GOOD_CONTEXT "[[adapter.context]]\npid = 8\nhandle = 0x11\n",
     ":11: key 'adapter[0].context[1].handle': expected a free context handle (17 is that of "
     "adapter[0].context[0]), got 17"},
    {"ContextEntryNegative", CONTEXT("entry = -1\n"),
     ":7: key 'adapter[0].context[0].entry': expected a whole number from 0 to 999999999, got -1"},
    {"ContextEntryTwice", GOOD_CONTEXT "[[adapter.context]]\nentry = 1\n",
     ":10: key 'adapter[0].context[1].entry': expected a free context entry (1 is that of "
     "adapter[0].context[0]), got 1"},
    {"FurtherLineWithAForeignName", GOOD_CONTEXT "further = { \"a b\" = \"\" }\n",
     ":9: key 'adapter[0].context[0].further': expected a name of letters, digits, \"_\", not "
     "\"pid\" or \"handle\", got \"a b\""},
    {"FurtherLineThatIsThePid", GOOD_CONTEXT "further = { pid = \"8\" }\n",
     ":9: key 'adapter[0].context[0].further': expected a name of letters, digits, \"_\", not "
     "\"pid\" or \"handle\", got \"pid\""},
    {"FurtherLineOfTwoLines", GOOD_CONTEXT "further = { a = \"1\\n2\" }\n",
     ":9: key 'adapter[0].context[0].further': expected a text of one line behind every name, "
     "got \"a\""},
    {"FurtherLineOfANumber", GOOD_CONTEXT "further = { a = 1 }\n",
     ":9: key 'adapter[0].context[0].further.a': expected a text, got 1"},
};

const std::vector<BadFile> kAllocations{
    {"UnknownAllocationKey", ALLOCATION("name = \"a\"\n"),
     ":10: key 'adapter[0].allocation[0].name': unknown key, expected one of \"entry\", "
     "\"handle\", \"device\", \"width\", \"height\", \"pitch\", \"bit_cnt\", \"secured\", "
     "\"size\", \"tile\", \"cpu_visible\", \"cache_type\", \"pool_type\", \"at_type\", "
     "\"segmentid\", \"hw_format\", \"compress_format\", \"bl_slot_index\", \"gpu_virt_addr\", "
     "\"imported\", \"fb_offset\", \"share\", \"vm_info\""},
    {"AllocationEntryTwice", ALLOCATION("entry = 5\n[[adapter.allocation]]\nentry = 5\n"),
     ":12: key 'adapter[0].allocation[1].entry': expected a free allocation entry (5 is that of "
     "adapter[0].allocation[0]), got 5"},
    {"AllocationHandleTwice", ALLOCATION("handle = 5\n[[adapter.allocation]]\nhandle = 5\n"),
     ":12: key 'adapter[0].allocation[1].handle': expected a free allocation handle (5 is that of "
     "adapter[0].allocation[0]), got 5"},
    {"AllocationOfAnUnknownDevice", ALLOCATION("device = 18\n"),
     ":10: key 'adapter[0].allocation[0].device': expected the handle of a device context of the "
     "adapter, [[adapter.context]], or a text, got 18"},
    {"AllocationWithoutAnyDevice", GOOD_ADAPTER "[[adapter.allocation]]\n",
     ":6: key 'adapter[0].allocation[0].device': expected the handle of a device context of the "
     "adapter, [[adapter.context]], or a text, got nothing"},
    {"AllocationValueOfTwoLines", ALLOCATION("width = \"1\\nsize=5\"\n"),
     ":10: key 'adapter[0].allocation[0].width': expected a number, or a text of one line, "
     "without control characters, got \"1\\u000asize=5\""},
    {"AllocationIsNoList", GOOD_ADAPTER "[adapter.allocation]\n",
     ":6: key 'adapter[0].allocation': expected a list of tables, [[allocation]], got a table"},
    {"AllocationNodesBesideAllocations",
     GOOD_CONTEXT "[adapter.debug]\n\"allocations/1/info\" = \"\"\n",
     ":10: key 'adapter[0].debug': expected no file in \"allocations\" beside the key 'context', "
     "got \"allocations/1/info\""},
    {"DeviceNodesBesideLeaks",
     GOOD_ADAPTER "leak = []\n[adapter.debug]\n\"devices/1/info\" = \"\"\n",
     ":8: key 'adapter[0].debug': expected no file in \"devices\" beside the key 'leak', "
     "got \"devices/1/info\""},
    {"AllocationsWithoutADirectory", GOOD_ADAPTER "debug = false\nallocation = []\n",
     ":7: key 'adapter[0].allocation': expected no such key beside a 'debug' that is false, "
     "got a list"},
};

const std::vector<BadFile> kSources{
    {"ShapeWithoutName", SHAPE("width = 1\n"),
     ":9: key 'adapter[0].shape[0].name': expected a text, got nothing"},
    {"ShapeNameTwice", GOOD_SHAPE "[[adapter.shape]]\nname = \"s\"\n",
     ":12: key 'adapter[0].shape[1].name': expected a free shape name (s is that of "
     "adapter[0].shape[0]), got \"s\""},
    {"ShapeOfNoWeight", GOOD_SHAPE "weight = 0\n",
     ":11: key 'adapter[0].shape[0].weight': expected a whole number from 1 to 1000000, got 0"},
    {"ShapeWithHandle", GOOD_SHAPE "handle = 1\n",
     ":11: key 'adapter[0].shape[0].handle': unknown key, expected one of \"name\", \"weight\", "
     "\"width\", \"height\", \"pitch\", \"bit_cnt\", \"secured\", \"size\", \"tile\", "
     "\"cpu_visible\", \"cache_type\", \"pool_type\", \"at_type\", \"segmentid\", \"hw_format\", "
     "\"compress_format\", \"bl_slot_index\", \"imported\", \"fb_offset\", \"share\""},

    {"GeneratedIsAList", GOOD_SHAPE "[[adapter.generated]]\n",
     ":11: key 'adapter[0].generated': expected a table, got a list"},
    {"UnknownGeneratedKey", GENERATED("count = 1\n"),
     ":12: key 'adapter[0].generated.count': unknown key, expected one of \"contexts\", \"pids\", "
     "\"allocations\", \"seed\", \"shapes\", \"devices\", \"segments\""},
    {"TooManyGenerated", GENERATED("allocations = 200001\n"),
     ":12: key 'adapter[0].generated.allocations': expected a whole number from 0 to 200000, "
     "got 200001"},
    {"GeneratedWithoutShapes", GOOD_CONTEXT "[adapter.generated]\nallocations = 1\n",
     ":9: key 'adapter[0].generated.shapes': expected the names of one or more "
     "[[adapter.shape]], got nothing"},
    {"GeneratedOfAnUnknownShape", GENERATED("allocations = 1\nshapes = [\"s\", \"t\"]\n"),
     ":13: key 'adapter[0].generated.shapes[1]': expected the name of an [[adapter.shape]], "
     "got \"t\""},
    {"GeneratedOfAnUnknownDevice", GENERATED("allocations = 1\ndevices = [17, 18]\n"),
     ":13: key 'adapter[0].generated.devices[1]': expected the handle of a device context of the "
     "adapter, [[adapter.context]], got 18"},
    {"GeneratedOfNoDevice", GENERATED("allocations = 1\ndevices = []\n"),
     ":13: key 'adapter[0].generated.devices': expected the handles of one or more device contexts "
     "of the adapter, got a list"},
    {"GeneratedOfDeviceText", GENERATED("allocations = 1\ndevices = [\"17\"]\n"),
     ":13: key 'adapter[0].generated.devices[0]': expected a whole number from 0 to 2147483647, "
     "got \"17\""},
    {"GeneratedOfNoSegment", GENERATED("allocations = 1\nsegments = []\n"),
     ":13: key 'adapter[0].generated.segments': expected at least one segment, got a list"},
    {"GeneratedSegmentsNumber", GENERATED("allocations = 1\nsegments = 1\n"),
     ":13: key 'adapter[0].generated.segments': expected a list of numbers, got 1"},
    {"GeneratedSeedNegative", GENERATED("allocations = 1\nseed = -1\n"),
     ":13: key 'adapter[0].generated.seed': expected a whole number from 0 to "
     "9223372036854775807, got -1"},
    {"TooManyContexts", GENERATED("contexts = 10001\n"),
     ":12: key 'adapter[0].generated.contexts': expected a whole number from 0 to 10000, "
     "got 10001"},
    {"GeneratedContextsOfNobody", GENERATED("contexts = 1\n"),
     ":11: key 'adapter[0].generated.pids': expected one or more process ids, or a [[process]], "
     "got nothing"},
    {"GeneratedContextOfPidZero", GENERATED("contexts = 1\npids = [0]\n"),
     ":13: key 'adapter[0].generated.pids[0]': expected a whole number from 1 to 4194304, got 0"},

    {"UnknownChangeKey", CHANGE("rate = 1\n"),
     ":12: key 'adapter[0].change.rate': unknown key, expected one of \"appear\", \"vanish\", "
     "\"live\", \"seed\", \"shapes\", \"devices\", \"segments\""},
    {"AppearTooFast", CHANGE("appear = 10001\n"),
     ":12: key 'adapter[0].change.appear': expected a whole number from 0 to 10000, got 10001"},
    {"VanishText", CHANGE("vanish = \"1\"\n"),
     ":12: key 'adapter[0].change.vanish': expected a whole number from 0 to 10000, got \"1\""},
    {"NoneMayLive", CHANGE("live = 0\n"),
     ":12: key 'adapter[0].change.live': expected a whole number from 1 to 200000, got 0"},
    {"ChangeWithoutShapes", GOOD_CONTEXT "[adapter.change]\n",
     ":9: key 'adapter[0].change.shapes': expected the names of one or more [[adapter.shape]], "
     "got nothing"},

    {"UnknownLeakKey", LEAK("rate = 1\n"),
     ":12: key 'adapter[0].leak[0].rate': unknown key, expected one of \"shape\", \"device\", "
     "\"segment\", \"per_second\""},
    {"LeakWithoutRate", LEAK("shape = \"s\"\ndevice = 17\n"),
     ":11: key 'adapter[0].leak[0].per_second': expected a whole number from 1 to 10000, "
     "got nothing"},
    {"LeakWithoutShape", LEAK("per_second = 1\n"),
     ":11: key 'adapter[0].leak[0].shape': expected a text, got nothing"},
    {"LeakOfAnUnknownShape", LEAK("per_second = 1\nshape = \"t\"\n"),
     ":13: key 'adapter[0].leak[0].shape': expected the name of an [[adapter.shape]], got \"t\""},
    {"LeakWithoutDevice", LEAK("per_second = 1\nshape = \"s\"\n"),
     ":11: key 'adapter[0].leak[0].device': expected a whole number from 0 to 2147483647, "
     "got nothing"},
    {"LeakOfAnUnknownDevice", LEAK("per_second = 1\nshape = \"s\"\ndevice = 18\n"),
     ":14: key 'adapter[0].leak[0].device': expected the handle of a device context of the "
     "adapter, [[adapter.context]], got 18"},
    {"LeakInASegmentText", LEAK("per_second = 1\nshape = \"s\"\ndevice = 17\nsegment = \"1\"\n"),
     ":15: key 'adapter[0].leak[0].segment': expected a whole number from -2147483648 to "
     "2147483647, got \"1\""},
};
// clang-format on

const auto name_of = [](const auto& file) { return std::string{file.param.name}; };

INSTANTIATE_TEST_SUITE_P(Contexts, VideoMemoryError, ::testing::ValuesIn(kContexts), name_of);
INSTANTIATE_TEST_SUITE_P(Allocations, VideoMemoryError, ::testing::ValuesIn(kAllocations), name_of);
INSTANTIATE_TEST_SUITE_P(Sources, VideoMemoryError, ::testing::ValuesIn(kSources), name_of);

struct KeyRange {
    const char* key;
    const char* range;
};

TEST(VideoMemoryErrorOfAValue, SaysTheRangeOfItsKey)
{
    const nimba::test::TempDirectory directory;
    for (const auto& [key, range] : std::vector<KeyRange>{
             {"handle", "0 to 2147483647"},
             {"device", "0 to 2147483647"},
             {"width", "0 to 1048576"},
             {"height", "0 to 1048576"},
             {"pitch", "0 to 2147483647"},
             {"bit_cnt", "0 to 1024"},
             {"secured", "-2147483648 to 2147483647"},
             {"size", "0 to 140737488355328"},
             {"tile", "-2147483648 to 2147483647"},
             {"cpu_visible", "-2147483648 to 2147483647"},
             {"cache_type", "-2147483648 to 2147483647"},
             {"pool_type", "-2147483648 to 2147483647"},
             {"at_type", "-2147483648 to 2147483647"},
             {"segmentid", "-2147483648 to 2147483647"},
             {"hw_format", "-2147483648 to 2147483647"},
             {"compress_format", "-2147483648 to 2147483647"},
             {"bl_slot_index", "-2147483648 to 2147483647"},
             {"gpu_virt_addr", "0 to 9223372036854775807"},
             {"imported", "-2147483648 to 2147483647"},
             {"fb_offset", "0 to 9223372036854775807"},
             {"share", "-2147483648 to 2147483647"},
         }) {
        const std::string file =
            directory.write("bad.toml", std::string{ALLOCATION("")} + key + " = true\n");
        EXPECT_EQ(error_of(file), file + ":10: key 'adapter[0].allocation[0]." + key +
                                      "': expected a whole number from " + range +
                                      ", or a text, got true");
    }
}

}  // namespace
}  // namespace nimba::sim::test
