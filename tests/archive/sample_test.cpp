// SPDX-License-Identifier: MIT
#include "tools/archive/archive_error.hpp"
#include "tools/archive/record_json.hpp"

#include <gtest/gtest.h>

namespace nimba::archive {
namespace {

std::string fault(const std::string& nodes, const std::string& counters = "")
{
    try {
        parse_sample(R"({"nodes": [)" + nodes + R"(], "counters": [)" + counters + "]}");
        return "";
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

TEST(SampleRecord, EveryMemberIsReadAsItIsWritten)
{
    Counters counters;
    counters.bus_id = "0000:01:00.0";
    counters.flips = {Flips{1, 2}, Flips{3, 4}};
    counters.frames = {FrameNodes{0.0, "1 2\n", "3\n"}, FrameNodes{0.25, "4 5\n", "6\n"}};
    counters.hardware = Words(12, 7);
    counters.usage_extended = Words(13, 4294967295U);
    const SampleRecord record{{{"/proc/gpuinfo_0", NodeKind::kFile, 0444, 3, true, {}, ""},
                               {"/sys/x", NodeKind::kDirectory, 0755, 0, false, {"b", "a%20c"}, ""},
                               {"/sys/y", NodeKind::kUnread, 0, 0, false, {}, "deadline"}},
                              {counters}};
    EXPECT_EQ(parse_sample(sample_json(record)), record);
}

TEST(SampleRecord, PathsLeadDown)
{
    for (const char* const path : {"sys", "/sys/../x", "//sys", "/sys/", "/s y", ""}) {
        EXPECT_EQ(fault(R"({"path": ")" + std::string{path} + R"(", "error": "EIO"})"),
                  "sample.json: nodes[0].path is no node's path")
            << path;
    }
    for (const char* const entry : {"..", ".", "", "a/b"}) {
        EXPECT_EQ(fault(R"({"path": "/x", "mode": 0, "entries": [")" + std::string{entry} + "\"]}"),
                  "sample.json: nodes[0].entries[0] is no name in a directory")
            << entry;
    }
}

TEST(SampleRecord, ANodeIsOneThing)
{
    EXPECT_EQ(fault(R"({"path": "/x", "error": "EIO"}, {"path": "/x", "error": "EIO"})"),
              "sample.json: nodes is a list with a path twice");
    EXPECT_EQ(fault(R"({"path": "/x/y/z", "error": "EIO"}, {"path": "/x", "mode": 0, "bytes": 1})"),
              "sample.json: nodes is a list with a node in a file");
    EXPECT_EQ(fault(R"({"path": "/x-y", "error": "EIO"}, {"path": "/x/z", "error": "EIO"},
                       {"path": "/x", "mode": 0, "bytes": 1})"),
              "sample.json: nodes is a list with a node in a file");
    EXPECT_EQ(fault(R"({"path": "/x-y", "error": "EIO"}, {"path": "/x", "mode": 0, "bytes": 1})"),
              "");
    EXPECT_EQ(fault(R"({"path": "/x", "mode": 2048, "bytes": 1})"),
              "sample.json: nodes[0].mode is no number of its range");
    EXPECT_EQ(fault(R"({"path": "/x", "mode": 0, "bytes": -1})"),
              "sample.json: nodes[0].bytes is no number of its range");
}

TEST(SampleRecord, WordsAreAsManyAsTheFunctionWrites)
{
    EXPECT_EQ(fault("", R"({"bus_id": "0000:01:00.0", "flips": null, "frames": null,
                            "hardware": [1], "hardware_extended": null, "usage": null,
                            "usage_extended": null, "queues": null})"),
              "sample.json: counters[0].hardware is no list of 12 words");
    EXPECT_EQ(fault("", R"({"bus_id": "0000:01:00.0", "flips": [{"time": 1, "count": 1}]})"),
              "sample.json: counters[0].flips is no pair");
}

}  // namespace
}  // namespace nimba::archive
