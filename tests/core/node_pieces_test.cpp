// SPDX-License-Identifier: MIT
#include "core/node_pieces.hpp"

#include "core/entries.hpp"
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <string>
#include <vector>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

class NodeText : public testing::Test {
  protected:
    // The pieces of the node, joined; each but the last ends at a line's end.
    std::string read(const std::string& name)
    {
        std::string text;
        count = 0;
        whole = pieces.read_at(directory.get(), name.c_str(), [&](std::string_view piece) {
            EXPECT_TRUE(text.empty() || text.ends_with('\n'));
            EXPECT_FALSE(piece.empty());
            text += piece;
            ++count;
        });
        return text;
    }

    std::string read_text(const std::string& text)
    {
        nodes.write("node", text);
        return read("node");
    }

    TempDirectory nodes;
    Descriptor directory{::open(nodes.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    NodePieces pieces;
    bool whole = false;
    int count = 0;
};

TEST_F(NodeText, AUsualNodeIsOnePiece)
{
    EXPECT_EQ(read_text("size=1\nwidth=2\n"), "size=1\nwidth=2\n");
    EXPECT_TRUE(whole);
    EXPECT_EQ(count, 1);
}

TEST_F(NodeText, AnEmptyNodeIsReadAndHasNoPiece)
{
    EXPECT_EQ(read_text(""), "");
    EXPECT_TRUE(whole);
    EXPECT_EQ(count, 0);
}

TEST_F(NodeText, TheLastLineMayLackItsNewline)
{
    EXPECT_EQ(read_text("size=1\nwidth=2"), "size=1\nwidth=2");
}

TEST_F(NodeText, BytesOfEveryValueArrive)
{
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    EXPECT_EQ(read_text(bytes), bytes);
}

TEST_F(NodeText, LongTextsComeInPiecesOfWholeLines)
{
    for (const std::size_t length : {8191U, 8192U, 8193U, 16384U, 100'000U}) {
        std::string text;
        while (text.size() < length) {
            text += "line " + std::to_string(text.size()) + "\n";
        }
        text.resize(length);
        EXPECT_EQ(read_text(text), text);
        EXPECT_TRUE(whole);
        EXPECT_GE(count, length > 8192 ? 2 : 1);
    }
}

TEST_F(NodeText, ALineThatFillsTheBufferIsWhole)
{
    const std::string line = std::string(8191, 'x') + "\n";
    EXPECT_EQ(read_text(line + "size=1\n"), line + "size=1\n");
    EXPECT_EQ(read_text("a\n" + line + line), "a\n" + line + line);
}

TEST_F(NodeText, ALineLongerThanTheBufferKeepsItsBeginningAndItsEnd)
{
    const std::string text = read_text("a=1\nsize=" + std::string(1'000'000, '7') + "end\nb=2\n");
    EXPECT_TRUE(whole);
    EXPECT_TRUE(text.starts_with("a=1\nsize=" + std::string(1000, '7')));
    EXPECT_TRUE(text.ends_with("7end\nb=2\n"));
    EXPECT_LT(text.size(), 20'000U);
    EXPECT_EQ(std::ranges::count(text, '\n'), 3);
}

TEST_F(NodeText, ALongLineWithoutAnEqualsSignGetsNone)
{
    const std::string text = read_text(std::string(1'000'000, 'x') + "\nb=2\n");
    EXPECT_TRUE(text.ends_with("x\nb=2\n"));
    EXPECT_EQ(std::ranges::count(text, '='), 1);
}

TEST_F(NodeText, ALongLineKeepsItsEqualsSignWhereverItIs)
{
    for (const std::size_t place : {0U, 127U, 1023U, 1024U, 1025U, 5000U, 8191U, 8192U, 50'000U}) {
        const std::string before(place, 'k');
        const std::string text = read_text(before + "=" + std::string(100'000, '1') + "\n");
        const std::size_t found = text.find('=');
        ASSERT_NE(found, std::string::npos) << place;
        EXPECT_EQ(std::min<std::size_t>(found, 1000), std::min<std::size_t>(place, 1000));
    }
}

TEST_F(NodeText, ShortReadsArePutTogether)
{
    const PlannedReads reads{{.node = "/node", .bytes_at_once = 1}};
    EXPECT_EQ(read_text("size=1\nwidth=2\n"), "size=1\nwidth=2\n");
    EXPECT_TRUE(whole);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(reads.reads(), 16U);  // the end is one, too
}

// 20,000 bytes in lines of 10.
std::string long_text()
{
    std::string text;
    for (int line = 10'000; line < 12'000; ++line) {
        text += "at=" + std::to_string(line) + ".\n";
    }
    return text;
}

TEST_F(NodeText, AReadThatFailsOnTheWayIsTold)
{
    nodes.write("node", long_text());
    for (const std::size_t bytes : {0U, 20U, 8'191U, 8'192U, 8'193U, 19'999U, 20'000U}) {
        SCOPED_TRACE(bytes);
        const auto before = open_descriptors();
        const PlannedReads reads{
            {.node = "/node", .bytes_before_failure = bytes, .error = EIO, .failures = 1}};
        read("node");
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_FALSE(whole);
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST_F(NodeText, AnInterruptedReadIsTakenUpAgain)
{
    nodes.write("node", long_text());
    for (const std::size_t bytes : {0U, 20U, 8'191U, 8'192U, 8'193U, 19'999U, 20'000U}) {
        SCOPED_TRACE(bytes);
        const PlannedReads reads{
            {.node = "/node", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        EXPECT_EQ(read("node"), long_text());
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_TRUE(whole);
    }
}

TEST_F(NodeText, ANodesDescriptorIsNotInherited)
{
    const std::string path = nodes.write("node", "size=1\n");
    std::vector<bool> closed;
    pieces.read_at(directory.get(), "node", [&](std::string_view) {
        for (const int fd : descriptors_on(path)) {
            closed.push_back(closes_on_exec(fd));
        }
    });
    EXPECT_EQ(closed, (std::vector<bool>{true}));
}

TEST_F(NodeText, ANodeThatCannotBeOpenedOrReadIsTold)
{
    EXPECT_EQ(read("missing"), "");
    EXPECT_FALSE(whole);
    std::filesystem::create_directory(nodes.path() / "directory");
    EXPECT_EQ(read("directory"), "");
    EXPECT_FALSE(whole);
}

TEST_F(NodeText, NoDescriptorStaysOpenWhenTheTakerThrows)
{
    nodes.write("node", "size=1\n");
    const int free_before = Descriptor{::dup(directory.get())}.get();
    EXPECT_THROW(pieces.read_at(directory.get(), "node", [](std::string_view) { throw 1; }), int);
    EXPECT_EQ(Descriptor{::dup(directory.get())}.get(), free_before);
}

TEST_F(NodeText, EntriesAreThoseOfTheDirectoryAlone)
{
    const std::set<std::string> names{"1", "..3", ".hidden", "a b"};
    for (const std::string& name : names) {
        nodes.write(name, "");
    }
    Entries entries{make_directory(nimba::Descriptor{::dup(directory.get())})};
    std::vector<std::string> listed;
    while (const char* name = entries.next()) {
        listed.emplace_back(name);
    }
    EXPECT_EQ(listed.size(), names.size());
    EXPECT_EQ((std::set<std::string>{listed.begin(), listed.end()}), names);
    EXPECT_FALSE(entries.failed());
}

}  // namespace
}  // namespace nimba::test
