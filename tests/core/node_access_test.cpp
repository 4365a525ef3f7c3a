// SPDX-License-Identifier: MIT
#include "core/node_access.hpp"

#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace nimba::test {
namespace {

class NodeAccess : public testing::Test {
  protected:
    // `bytes` with up to `size` of them replaced by the node's text.
    static int read(int directory, const std::string& name, std::string& bytes, uint64_t size)
    {
        return read_node_at(directory, name.c_str(), bytes.data(), size);
    }

    TempDirectory nodes;
    Descriptor directory{::open(nodes.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
};

// Nodes that no user, the superuser included, can open.
class UnopenableNodes : public NodeAccess {
  protected:
    struct Node {
        int directory;
        std::string name;
    };

    UnopenableNodes()
    {
        nodes.write("file", "7\n");
        std::filesystem::create_symlink("nowhere", nodes.path() / "dangling");
        std::filesystem::create_symlink("loop", nodes.path() / "loop");
    }

    const int not_a_directory = -1;
    const std::vector<Node> unopenable = {
        {directory.get(), "missing"},
        {directory.get(), "missing/node"},
        {directory.get(), "file/node"},
        {directory.get(), "loop"},
        {directory.get(), ""},
        {directory.get(), std::string(300, 'n')},
        {0, (nodes.path() / "missing").string()},
        {not_a_directory, "file"},
    };
};

TEST_F(NodeAccess, ReadStoresTheWholeNodeAndReturnsItsLength)
{
    nodes.write("node", "VA=1\n");
    std::string buffer(16, '#');
    EXPECT_EQ(read(directory.get(), "node", buffer, buffer.size()), 5);
    EXPECT_EQ(buffer, "VA=1\n###########");
}

TEST_F(NodeAccess, ReadDoesNotTerminateTheText)
{
    nodes.write("node", "0123456789");
    std::string buffer(10, '#');
    EXPECT_EQ(read(directory.get(), "node", buffer, 10), 10);
    EXPECT_EQ(buffer, "0123456789");
}

TEST_F(NodeAccess, ReadStopsAtTheSize)
{
    nodes.write("node", "0123456789");
    std::string buffer(8, '#');
    EXPECT_EQ(read(directory.get(), "node", buffer, 4), 4);
    EXPECT_EQ(buffer, "0123####");
    EXPECT_EQ(read(directory.get(), "node", buffer, 0), 0);
    EXPECT_EQ(buffer, "0123####");
}

TEST_F(NodeAccess, ReadTakesNulsAndManyBytesLikeAnyOther)
{
    std::string text;
    for (int line = 0; line < 5000; ++line) {
        text += std::string{"line\0of node\n", 13};
    }
    nodes.write("node", text);
    std::string buffer(70000, '#');
    EXPECT_EQ(read(directory.get(), "node", buffer, buffer.size()), 65000);
    EXPECT_EQ(buffer, text + std::string(5000, '#'));
}

TEST_F(NodeAccess, ReadOfAnEmptyNodeGivesZero)
{
    nodes.write("node", "");
    std::string buffer(4, '#');
    EXPECT_EQ(read(directory.get(), "node", buffer, 4), 0);
    EXPECT_EQ(buffer, "####");
}

TEST_F(NodeAccess, ReadOfADirectoryGivesZero)
{
    std::filesystem::create_directory(nodes.path() / "node");
    std::string buffer(4, '#');
    EXPECT_EQ(read(directory.get(), "node", buffer, 4), 0);
    EXPECT_EQ(buffer, "####");
}

TEST_F(NodeAccess, ReadTakesANameWithDirectories)
{
    std::filesystem::create_directories(nodes.path() / "hwmon/hwmon3");
    nodes.write("hwmon/hwmon3/temp1_input", "45000\n");
    std::string buffer(6, '#');
    EXPECT_EQ(read(directory.get(), "hwmon/hwmon3/temp1_input", buffer, 6), 6);
    EXPECT_EQ(buffer, "45000\n");
}

TEST_F(NodeAccess, AbsoluteNameIgnoresTheDirectory)
{
    const std::string path = nodes.write("node", "12\n");
    for (const int any : {0, -1, directory.get()}) {
        SCOPED_TRACE(any);
        std::string buffer(3, '#');
        EXPECT_EQ(read(any, path, buffer, 3), 3);
        EXPECT_EQ(buffer, "12\n");
        int value = 0;
        EXPECT_EQ(scanf_node_at(any, path.c_str(), "%d", &value), 1);
        EXPECT_EQ(value, 12);
        EXPECT_EQ(printf_node_at(any, path.c_str(), "%d", 12), 2);
        EXPECT_EQ(nodes.read("node"), "12\n");
    }
}

TEST_F(NodeAccess, ScanConvertsByTheRulesOfScanf)
{
    nodes.write("node", "level=0x1f name core 7\n");
    unsigned level = 0;
    std::array<char, 8> name{};
    int value = 0;
    EXPECT_EQ(
        scanf_node_at(directory.get(), "node", "level=%x name %7s %d", &level, name.data(), &value),
        3);
    EXPECT_EQ(level, 0x1FU);
    EXPECT_STREQ(name.data(), "core");
    EXPECT_EQ(value, 7);
}

TEST_F(NodeAccess, ScanCountsTheConversionsBeforeAMismatch)
{
    nodes.write("node", "1 2 three");
    int first = -1;
    int second = -1;
    int third = -1;
    EXPECT_EQ(scanf_node_at(directory.get(), "node", "%d %d %d", &first, &second, &third), 2);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(third, -1);
    EXPECT_EQ(scanf_node_at(directory.get(), "node", "x%d", &third), 0);
    EXPECT_EQ(third, -1);
}

TEST_F(NodeAccess, ScanOfANodeWithoutTextGivesEndOfFile)
{
    for (const char* text : {"", "\n", " \t\n"}) {
        SCOPED_TRACE(testing::PrintToString(text));
        nodes.write("node", text);
        int value = 42;
        EXPECT_EQ(scanf_node_at(directory.get(), "node", "%d", &value), -1);
        EXPECT_EQ(value, 42);
    }
}

TEST_F(NodeAccess, ScanOfADirectoryGivesEndOfFile)
{
    std::filesystem::create_directory(nodes.path() / "node");
    int value = 42;
    EXPECT_EQ(scanf_node_at(directory.get(), "node", "%d", &value), -1);
    EXPECT_EQ(value, 42);
}

TEST_F(NodeAccess, PrintWritesTheFormattedTextAndReturnsItsLength)
{
    nodes.write("node", "");
    EXPECT_EQ(printf_node_at(directory.get(), "node", "%s %d 0x%x\n", "set", -4, 0xAB), 12);
    EXPECT_EQ(nodes.read("node"), "set -4 0xab\n");
}

TEST_F(NodeAccess, PrintWritesFromTheStartWithoutTruncating)
{
    nodes.write("node", "abcdef");
    EXPECT_EQ(printf_node_at(directory.get(), "node", "%d", 12), 2);
    EXPECT_EQ(nodes.read("node"), "12cdef");
}

TEST_F(NodeAccess, PrintOfNothingWritesNothing)
{
    nodes.write("node", "abc");
    EXPECT_EQ(printf_node_at(directory.get(), "node", "%s", ""), 0);
    EXPECT_EQ(nodes.read("node"), "abc");
}

TEST_F(NodeAccess, PrintTakesLongTexts)
{
    nodes.write("node", "");
    const std::string text(20000, 'w');
    EXPECT_EQ(printf_node_at(directory.get(), "node", "%s", text.c_str()), 20000);
    EXPECT_EQ(nodes.read("node"), text);
}

// The kernel takes each write to this node as a new name for the thread.
TEST_F(NodeAccess, PrintOfSeveralLinesReachesTheDriverAsOneWrite)
{
    int count = -1;
    std::array<char, 16> name{};
    std::thread{[&] {
        count = printf_node_at(0, "/proc/thread-self/comm", "%d\n%s\n", 1234567, "abcdef");
        ::prctl(PR_GET_NAME, name.data());
    }}.join();
    EXPECT_EQ(count, 15);
    EXPECT_STREQ(name.data(), "1234567\nabcdef\n");
}

TEST_F(NodeAccess, PrintCountsAValueThatTheDriverRejects)
{
    EXPECT_EQ(printf_node_at(0, "/dev/full", "%d", 1), 1);
}

TEST_F(NodeAccess, PrintOfADirectoryGivesZero)
{
    std::filesystem::create_directory(nodes.path() / "node");
    EXPECT_EQ(printf_node_at(directory.get(), "node", "%d", 1), 0);
}

TEST_F(UnopenableNodes, GiveZeroAndLeaveEveryTargetAsItWas)
{
    for (const Node& node : unopenable) {
        SCOPED_TRACE(node.name + " at " + std::to_string(node.directory));
        std::string buffer(4, '#');
        EXPECT_EQ(read(node.directory, node.name, buffer, 4), 0);
        EXPECT_EQ(buffer, "####");
        int value = 42;
        EXPECT_EQ(scanf_node_at(node.directory, node.name.c_str(), "%d", &value), 0);
        EXPECT_EQ(value, 42);
        EXPECT_EQ(printf_node_at(node.directory, node.name.c_str(), "%d", 1), 0);
    }
    EXPECT_EQ(nodes.read("file"), "7\n");
}

TEST_F(UnopenableNodes, AreNotCreatedByAPrint)
{
    EXPECT_EQ(printf_node_at(directory.get(), "missing", "%d", 1), 0);
    EXPECT_EQ(printf_node_at(directory.get(), "dangling", "%d", 1), 0);
    EXPECT_FALSE(std::filesystem::exists(nodes.path() / "missing"));
    EXPECT_FALSE(std::filesystem::exists(nodes.path() / "nowhere"));
}

}  // namespace
}  // namespace nimba::test
