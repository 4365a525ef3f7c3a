// SPDX-License-Identifier: MIT
#include "tools/archive/writer.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/reader.hpp"

#include <stdlib.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace nimba::archive {
namespace {

namespace fs = std::filesystem;

class WriterTest : public testing::Test {
  protected:
    void SetUp() override
    {
        std::string name = fs::temp_directory_path() / "nimba-archive.XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory_ = name;
    }
    void TearDown() override { fs::remove_all(directory_); }

    std::string file() const { return directory_ / "machine.tar.zst"; }

    std::size_t files() const
    {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator{directory_}, fs::directory_iterator{}));
    }

    fs::path directory_;
};

TEST_F(WriterTest, WhatWasAddedIsReadAgain)
{
    Writer writer{file()};
    writer.add("dmidecode.txt", "modules");
    writer.add("samples/0/nodes/proc/x", std::string{"a\0b", 3});
    writer.add("preferences.ini", "");
    writer.complete();
    std::map<std::string, std::string> texts;
    read_file(file(), {}, [&](const EntryName& name, std::string bytes) {
        texts[name.path + std::to_string(static_cast<int>(name.kind))] = std::move(bytes);
    });
    EXPECT_EQ(texts, (std::map<std::string, std::string>{
                         {"1", "modules"}, {"/proc/x4", std::string{"a\0b", 3}}, {"2", ""}}));
}

TEST_F(WriterTest, TheFileIsItsOwnersAlone)
{
    Writer writer{file()};
    writer.complete();
    struct stat status {};
    ASSERT_EQ(stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(files(), 1U);
}

TEST_F(WriterTest, AnArchiveThatIsNotCompletedLeavesWhatWasThere)
{
    std::ofstream{file()} << "before";
    {
        Writer writer{file()};
        writer.add("dmidecode.txt", "modules");
    }
    std::ifstream stream{file()};
    EXPECT_EQ((std::string{std::istreambuf_iterator<char>{stream}, {}}), "before");
    EXPECT_EQ(files(), 1U);
}

TEST_F(WriterTest, ThereIsRoomUpToTheLimitsAndForTheRecords)
{
    constexpr uint64_t kRecords = 64ULL << 20U;
    Writer writer{file(), {.entry_bytes = 10, .total_bytes = kRecords + 15}};
    EXPECT_TRUE(writer.has_room(10));
    EXPECT_FALSE(writer.has_room(11));
    EXPECT_TRUE(writer.has_room(10, 1, 5));
    EXPECT_FALSE(writer.has_room(10, 1, 6));
    writer.add("dmidecode.txt", "0123456789");
    EXPECT_TRUE(writer.has_room(5));
    EXPECT_FALSE(writer.has_room(6));
}

TEST_F(WriterTest, ThereIsRoomForSoManyEntries)
{
    constexpr uint64_t kForTheRecords = 16;
    Writer writer{file(), {.entries = kForTheRecords + 2}};
    EXPECT_TRUE(writer.has_room(1, 2));
    EXPECT_FALSE(writer.has_room(1, 3));
}

TEST_F(WriterTest, AnArchiveIsAsLargeAsAReaderWantsItToBe)
{
    constexpr Limits kLimits{.ratio = 10, .free_bytes = 1000};
    Writer writer{file(), kLimits};
    writer.add("dmidecode.txt", std::string(1'000'000, 'x'));
    writer.complete();
    EXPECT_GE(fs::file_size(file()), 100'000U);
    EXPECT_LE(fs::file_size(file()), 101'000U);
    std::size_t size = 0;
    read_file(file(), kLimits,
              [&](const EntryName&, const std::string& bytes) { size = bytes.size(); });
    EXPECT_EQ(size, 1'000'000U);
}

TEST_F(WriterTest, WhatIsNoFileIsNotReplaced)
{
    const auto fault = [](const std::string& path) -> std::string {
        try {
            Writer{path};
            return "";
        } catch (const ArchiveError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(fault("/dev/null"), "it is no regular file");
    EXPECT_EQ(fault(directory_), "it is a directory");
    EXPECT_EQ(fault(directory_ / "missing/file"), "cannot write it: No such file or directory");
}

}  // namespace
}  // namespace nimba::archive
