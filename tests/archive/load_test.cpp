// SPDX-License-Identifier: MIT
#include "tools/archive/load.hpp"

#include "made_archive.hpp"

#include <gtest/gtest.h>

namespace nimba::archive {
namespace {

std::string sample_with(const std::string& nodes)
{
    return R"({"nodes": [)" + nodes + R"(], "counters": []})";
}

TEST(Load, EachSampleHasItsTimeAndItsTexts)
{
    const std::string nodes = sample_with(
        R"({"path": "/proc/gpuinfo_0", "mode": 292, "bytes": 3},
           {"path": "/sys/x", "mode": 493, "entries": ["b", "a"]},
           {"path": "/sys/y", "error": "EACCES"})");
    const Capture capture =
        load_capture_bytes(made_archive({{"samples/0/nodes/proc/gpuinfo_0", "one"},
                                         {"samples/0/sample.json", nodes},
                                         {"samples/1/nodes/proc/gpuinfo_0", "two"},
                                         {"samples/1/sample.json", nodes},
                                         {"dmidecode.txt", "modules"},
                                         {"manifest.json", small_manifest(2)}}));
    ASSERT_EQ(capture.samples.size(), 2U);
    EXPECT_EQ(capture.samples[1].time.seconds, 1.0);
    EXPECT_EQ(*capture.samples[0].texts.at("/proc/gpuinfo_0"), "one");
    EXPECT_EQ(*capture.samples[1].texts.at("/proc/gpuinfo_0"), "two");
    EXPECT_EQ(capture.samples[0].record.nodes[1].entries, (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(capture.samples[0].record.nodes[2].error, "EACCES");
    EXPECT_EQ(capture.dmidecode, "modules");
    EXPECT_EQ(capture.preferences, std::nullopt);
}

TEST(Load, TextsThatDidNotChangeAreKeptOnce)
{
    const std::string node = sample_with(R"({"path": "/proc/gpuinfo_0", "mode": 292, "bytes": 3})");
    const Capture capture =
        load_capture_bytes(made_archive({{"samples/0/nodes/proc/gpuinfo_0", "one"},
                                         {"samples/0/sample.json", node},
                                         {"samples/1/nodes/proc/gpuinfo_0", "one"},
                                         {"samples/1/sample.json", node},
                                         {"manifest.json", small_manifest(2)}}));
    EXPECT_EQ(capture.samples[0].texts.at("/proc/gpuinfo_0").get(),
              capture.samples[1].texts.at("/proc/gpuinfo_0").get());
}

TEST(Load, AManifestThatLiesAboutTheSamplesIsRefused)
{
    constexpr const char* kFault = "manifest.json tells other samples than there are";
    EXPECT_EQ(fault_in(made_archive({{"samples/0/sample.json", small_sample()},
                                     {"manifest.json", small_manifest(2)}})),
              kFault);
    EXPECT_EQ(fault_in(made_archive({{"samples/1/sample.json", small_sample()},
                                     {"manifest.json", small_manifest()}})),
              kFault);
    EXPECT_EQ(fault_in(made_archive({{"manifest.json", small_manifest()}})), kFault);
}

TEST(Load, ASampleThatLiesAboutItsNodesIsRefused)
{
    const std::string told = sample_with(R"({"path": "/proc/gpuinfo_0", "mode": 292, "bytes": 3})");
    constexpr const char* kFault = "samples/0/sample.json tells of /proc/gpuinfo_0 what is not so";
    EXPECT_EQ(fault_in(made_archive(
                  {{"samples/0/sample.json", told}, {"manifest.json", small_manifest()}})),
              kFault);
    EXPECT_EQ(fault_in(made_archive({{"samples/0/nodes/proc/gpuinfo_0", "four"},
                                     {"samples/0/sample.json", told},
                                     {"manifest.json", small_manifest()}})),
              kFault);
    EXPECT_EQ(fault_in(made_archive({{"samples/0/nodes/proc/gpuinfo_0", "one"},
                                     {"samples/0/nodes/proc/gpuinfo_1", "one"},
                                     {"samples/0/sample.json", told},
                                     {"manifest.json", small_manifest()}})),
              "samples/0/sample.json does not tell all nodes that there are");
    EXPECT_EQ(fault_in(made_archive({{"samples/0/nodes/proc/gpuinfo_0", "one"},
                                     {"manifest.json", small_manifest()}})),
              "it has no samples/0/sample.json");
    EXPECT_EQ(fault_in(made_archive({{"samples/100000/sample.json", small_sample()}})),
              "it has too many samples");
}

}  // namespace
}  // namespace nimba::archive
