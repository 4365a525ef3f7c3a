// SPDX-License-Identifier: MIT
#include "tools/smi/capture/node_reader.hpp"

#include <stdlib.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>

namespace nimba::smi {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class NodeReaderTest : public testing::Test {
  protected:
    void SetUp() override
    {
        std::string name = fs::temp_directory_path() / "nimba-reader.XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory_ = name;
    }
    void TearDown() override { fs::remove_all(directory_); }

    std::string make(const std::string& name, const std::string& text)
    {
        const fs::path path = directory_ / name;
        std::ofstream{path} << text;
        return path;
    }

    fs::path directory_;
    DeadlineReader reader_{60s};
};

TEST_F(NodeReaderTest, AFileIsReadUpToTheLimit)
{
    const std::string path = make("node", "0123456789");
    ReadNode node = reader_.read(path, 10);
    EXPECT_EQ(node.error, 0);
    EXPECT_EQ(node.text, "0123456789");
    EXPECT_FALSE(node.cut);
    node = reader_.read(path, 9);
    EXPECT_EQ(node.text, "012345678");
    EXPECT_TRUE(node.cut);
    EXPECT_EQ(reader_.read(make("empty", ""), 9).text, "");
}

TEST_F(NodeReaderTest, ALargeFileIsReadInPieces)
{
    std::string text;
    for (int i = 0; text.size() < 3'000'000; ++i) {
        text += std::to_string(i) + '\n';
    }
    const std::string path = make("node", text);
    EXPECT_EQ(reader_.read(path, text.size()).text, text);
    EXPECT_FALSE(reader_.read(path, text.size()).cut);
    const ReadNode node = reader_.read(path, text.size() - 1);
    EXPECT_EQ(node.text, text.substr(0, text.size() - 1));
    EXPECT_TRUE(node.cut);
}

TEST_F(NodeReaderTest, PermissionsAreTold)
{
    const std::string path = make("node", "1");
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    EXPECT_EQ(reader_.read(path, 10).mode, 0604U);
}

TEST_F(NodeReaderTest, ErrorsAreTold)
{
    EXPECT_EQ(reader_.read(directory_ / "missing", 10).error, ENOENT);
    EXPECT_EQ(reader_.read(directory_, 10).error, EISDIR);
    EXPECT_EQ(reader_.list(make("node", "1")).error, ENOTDIR);
}

TEST_F(NodeReaderTest, ADirectoryHasNames)
{
    make("one", "");
    make("two words", "");
    auto names = reader_.list(directory_).names;
    std::ranges::sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"one", "two words"}));
}

TEST_F(NodeReaderTest, ANodeThatBlocksCostsItselfAlone)
{
    DeadlineReader reader{50ms};
    const std::string pipe = directory_ / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(reader.read(pipe, 10).error, kNoAnswer);
    DeadlineReader& patient = reader_;
    EXPECT_EQ(patient.read(make("node", "1"), 10).text, "1");
    // A new process answers in the place of the one that was given up; a slow machine may need more
    // than one try.
    ReadNode node = reader.read(directory_ / "node", 10);
    for (int tries = 0; tries < 100 && node.error == kNoAnswer; ++tries) {
        node = reader.read(directory_ / "node", 10);
    }
    EXPECT_EQ(node.text, "1");
}

}  // namespace
}  // namespace nimba::smi
