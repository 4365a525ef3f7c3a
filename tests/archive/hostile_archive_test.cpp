// SPDX-License-Identifier: MIT
// Archives that somebody made to do harm: each is refused in one line.
#include "made_archive.hpp"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"
#include "tools/archive/reader.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <initializer_list>
#include <string_view>

namespace nimba::archive {
namespace {

std::string fault_with_limits(const std::string& archive, const Limits& limits)
{
    try {
        read_bytes(archive, limits, [](const EntryName&, const std::string&) {});
        return "";
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

std::string load_fault(const std::string& archive, const Limits& limits)
{
    try {
        load_capture_bytes(archive, limits);
        return "";
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

TEST(HostileArchive, NamesThatLeaveTheDirectoryAreRefused)
{
    EXPECT_EQ(fault_in(made_archive({{"samples/0/nodes/../../../../etc/cron.d/x", "x"}})),
              "a capture has no entry \"samples/0/nodes/../../../../etc/cron.d/x\"");
    EXPECT_EQ(fault_in(made_archive({{"/etc/passwd", "x"}})),
              "a capture has no entry \"/etc/passwd\"");
    EXPECT_EQ(fault_in(made_archive({{"manifest.json\n\x1b[2J", "x"}})),
              "a capture has no entry \"manifest.json%0A%1B%5B2J\"");
}

TEST(HostileArchive, LinksAndDevicesAreRefused)
{
    EXPECT_EQ(fault_in(made_archive({{"manifest.json", "", S_IFLNK, "", "/etc/passwd"}})),
              "entry \"manifest.json\" is no regular file");
    EXPECT_EQ(
        fault_in(made_archive({{"dmidecode.txt", "x"}, {"manifest.json", "", 0, "dmidecode.txt"}})),
        "entry \"manifest.json\" is no regular file");
    for (const unsigned type :
         std::initializer_list<unsigned>{S_IFCHR, S_IFBLK, S_IFIFO, S_IFDIR}) {
        EXPECT_EQ(fault_in(made_archive({{"dmidecode.txt", "", type}})),
                  type == S_IFDIR ? "entry \"dmidecode.txt/\" is no regular file"
                                  : "entry \"dmidecode.txt\" is no regular file");
    }
}

TEST(HostileArchive, AnEntryThatComesTwiceIsRefused)
{
    EXPECT_EQ(fault_in(made_archive({{"dmidecode.txt", "one"}, {"dmidecode.txt", "two"}})),
              "entry \"dmidecode.txt\" comes twice");
}

TEST(HostileArchive, ABombIsRefusedByItsRatio)
{
    const std::string bomb = made_archive({{"dmidecode.txt", std::string(64U << 20U, '\0')}});
    ASSERT_LT(bomb.size(), 20'000U);
    EXPECT_EQ(fault_in(bomb), "it unpacks to more than its size allows");
}

TEST(HostileArchive, ABombOfHeadersIsRefused)
{
    const std::string attribute(200'000, 'x');
    std::vector<MadeEntry> entries;
    for (const char* const node : {"1", "2", "3", "4", "5", "6", "7", "8"}) {
        entries.push_back({std::string{"samples/0/nodes/"} + node, "", 0, "", "", attribute});
    }
    EXPECT_EQ(fault_with_limits(made_archive(entries), {}),
              "it unpacks to more than its size allows");
    entries.resize(1);
    EXPECT_EQ(fault_with_limits(made_archive(entries), {}), "");
}

TEST(HostileArchive, JsonThatIsNestedWithoutEndIsRefused)
{
    const std::string nested(1'000'000, '[');
    EXPECT_EQ(fault_in(made_archive({{"samples/0/sample.json", nested}})),
              "sample.json is nested too deep");
    EXPECT_EQ(fault_in(made_archive({{"manifest.json", nested}})),
              "manifest.json is nested too deep");
}

std::string repeated(std::string_view text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += (i == 0 ? "" : ",") + std::string{text};
    }
    return all;
}

// A parser that goes through a list again at each of its values would need minutes.
TEST(HostileArchive, JsonWithTooManyValuesIsRefused)
{
    EXPECT_EQ(
        fault_in(made_archive({{"samples/0/sample.json", "[" + repeated("0", 2'999'999) + "]"}})),
        "sample.json:  is no object");
    EXPECT_EQ(
        fault_in(made_archive({{"samples/0/sample.json", "[" + repeated("0", 3'000'000) + "]"}})),
        "sample.json has too many values");
}

TEST(HostileArchive, NoMoreDevicesThanAMachineCanHave)
{
    const auto fault = [](const std::string& counters) {
        return fault_in(made_archive(
            {{"samples/0/sample.json", R"({"nodes": [], "counters": [)" + counters + "]}"}}));
    };
    EXPECT_EQ(fault(repeated("0", 256)), "sample.json: counters[0] is no object");
    EXPECT_EQ(fault(repeated("0", 257)), "sample.json: counters is too long a list");
}

TEST(HostileArchive, SamplesTellSoManyNodesAtMost)
{
    const std::string record =
        R"({"nodes": [{"path": "/a", "mode": 493, "entries": ["b", "c"]},
                      {"path": "/d", "error": "EIO"}], "counters": []})";
    const std::string archive = made_archive({{"samples/0/sample.json", record},
                                              {"samples/1/sample.json", record},
                                              {"manifest.json", small_manifest(2)}});
    EXPECT_EQ(load_fault(archive, {.nodes = 8}), "");
    EXPECT_EQ(load_fault(archive, {.nodes = 7}), "its samples tell too many nodes");
}

TEST(HostileArchive, HeadersCountAgainstTheRatio)
{
    std::vector<MadeEntry> entries;
    for (int i = 0; i < 100; ++i) {
        entries.push_back({"samples/0/nodes/" + std::to_string(i), ""});
    }
    const std::string archive = made_archive(entries);  // of more than 100 * 512 bytes unpacked
    ASSERT_LT(archive.size(), 4'000U);
    EXPECT_EQ(fault_with_limits(archive, {.ratio = 10, .free_bytes = 200'000}), "");
    EXPECT_EQ(fault_with_limits(archive, {.ratio = 10, .free_bytes = 10'000}),
              "it unpacks to more than its size allows");
}

TEST(HostileArchive, WhatIsBeyondEachLimitIsRefused)
{
    const std::string archive =
        made_archive({{"dmidecode.txt", "0123456789"}, {"preferences.ini", "0123456789"}});
    EXPECT_EQ(fault_with_limits(archive, {}), "");
    EXPECT_EQ(fault_with_limits(archive, {.entry_bytes = 10, .total_bytes = 20}), "");
    EXPECT_EQ(fault_with_limits(archive, {.entry_bytes = 9}),
              "entry \"dmidecode.txt\" is too large");
    EXPECT_EQ(fault_with_limits(archive, {.total_bytes = 19}),
              "it unpacks to more than its size allows");
    EXPECT_EQ(fault_with_limits(archive, {.entries = 1}), "it has too many entries");
    EXPECT_EQ(fault_with_limits(archive, {.name_bytes = 13}),
              "the name of entry \"preferences.ini\" is too long");
    EXPECT_EQ(fault_with_limits(archive, {.all_names_bytes = 28}), "");
    EXPECT_EQ(fault_with_limits(archive, {.all_names_bytes = 27}),
              "the names of its entries are too long");
    EXPECT_EQ(
        fault_with_limits(made_archive({{"manifest.json", "0123456789"}}), {.record_bytes = 9}),
        "entry \"manifest.json\" is too large");
}

TEST(HostileArchive, ATruncatedOneIsRefusedWhereverItEnds)
{
    const std::string whole = made_archive(
        {{"samples/0/sample.json", small_sample()}, {"manifest.json", small_manifest()}});
    ASSERT_EQ(fault_in(whole), "");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_NE(fault_in(whole.substr(0, size)), "") << size;
    }
}

TEST(HostileArchive, OtherFilesAreNone)
{
    constexpr const char* kNone = "it is no capture, or damaged, or it ends early";
    EXPECT_EQ(fault_in("some text"), kNone);
    EXPECT_EQ(fault_in(made_archive({{"manifest.json", small_manifest()}}, Packing::kGzip)), kNone);
    EXPECT_EQ(fault_in(made_archive({})),
              "it has no manifest.json: it is no capture, or it is truncated");
}

TEST(HostileArchive, OnlyARegularFileIsRead)
{
    const auto fault = [](const char* file) -> std::string {
        try {
            load_capture(file);
            return "";
        } catch (const ArchiveError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(fault("/dev/zero"), "it is no regular file");
    EXPECT_EQ(fault("/"), "it is no regular file");
    EXPECT_EQ(fault("/nonexistent/file"), "No such file or directory");
}

}  // namespace
}  // namespace nimba::archive
