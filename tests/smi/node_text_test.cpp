// SPDX-License-Identifier: MIT
#include "tools/smi/worker/node_text.hpp"

#include "tools/descriptor.hpp"

#include <fcntl.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

class NodeTextTest : public testing::Test {
  protected:
    NodeTextTest()
    {
        std::string pattern = (fs::temp_directory_path() / "node_text.XXXXXX").string();
        root_ = ::mkdtemp(pattern.data());
        directory_ = tools::Descriptor{::open(root_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    }
    ~NodeTextTest() override { fs::remove_all(root_); }

    NodeText text_of(const std::string& content)
    {
        std::ofstream{root_ / "node"} << content;
        return node_text(directory_.get(), "node");
    }

    fs::path root_;
    tools::Descriptor directory_;
};

TEST_F(NodeTextTest, IsTheBeginningOfTheNode)
{
    EXPECT_EQ(text_of("0\n"), (NodeText{0, "0\n"}));
    EXPECT_EQ(text_of(""), (NodeText{0, ""}));
    EXPECT_EQ(text_of(std::string(65, 'x')), (NodeText{0, std::string(64, 'x')}));
}

TEST_F(NodeTextTest, TellsWhyThereIsNone)
{
    EXPECT_EQ(node_text(directory_.get(), "missing"), (NodeText{ENOENT, ""}));
    EXPECT_EQ(node_text(-1, "node"), (NodeText{EBADF, ""}));
    EXPECT_EQ(node_text(directory_.get(), "."), (NodeText{EISDIR, ""}));
}

TEST(FirstWord, IsADecimalNumberOrNot)
{
    for (const char* text : {"0", "00", "-0", "16\n", " \t\n-5 x", "+7", "4294967295\n"}) {
        EXPECT_TRUE(begins_with_number(text)) << text;
    }
    EXPECT_TRUE(begins_with_number(std::string_view{"5\0", 2}));
    for (const char* text : {"", "\n", "-", "+", "+-1", "- 1", "x1", "0x10", "16MHz", "none",
                             "99999999999999999999", "\xFF"}) {
        EXPECT_FALSE(begins_with_number(text)) << text;
    }
}

TEST(MeansAbsent, IsNoMatterOfPermissions)
{
    EXPECT_TRUE(means_absent(ENOENT));
    EXPECT_TRUE(means_absent(ENOTDIR));
    EXPECT_TRUE(means_absent(EBADF));
    EXPECT_FALSE(means_absent(EACCES));
    EXPECT_FALSE(means_absent(EIO));
}

}  // namespace
}  // namespace nimba::smi
