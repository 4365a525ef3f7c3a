// SPDX-License-Identifier: MIT
// Nodes of processes whose reading is short, fails, or is interrupted.
#include "process_node_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"

#include <cerrno>
#include <filesystem>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

class BrokenProcessNode : public ProcessNode {
  protected:
    BrokenProcessNode() { directory_.write("info", std::string(100'000, '\n') + "pid = 4711\n"); }
};

TEST_F(BrokenProcessNode, IsToldAndFails)
{
    for (const std::size_t bytes : {0U, 20U, 511U, 50'000U}) {
        SCOPED_TRACE(bytes);
        const auto before = open_descriptors();
        const PlannedReads reads{
            {.node = "/info", .bytes_before_failure = bytes, .error = EIO, .failures = 1}};
        pid();
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_EQ(status_, -1);
        EXPECT_EQ(output_, kNoPid);
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST_F(BrokenProcessNode, ThatIsOnlyInterruptedIsReadOn)
{
    for (const std::size_t bytes : {0U, 20U, 50'000U}) {
        SCOPED_TRACE(bytes);
        const PlannedReads reads{
            {.node = "/info", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        EXPECT_EQ(pid(), "4711");
        EXPECT_EQ(reads.failures_left(), 0);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
    }
}

TEST_F(BrokenProcessNode, ThatComesInShortReadsHasTheSameLines)
{
    directory_.write("info", "name = x\n" + std::string(511, 'x') + "pid = 4711\n");
    for (const std::size_t bytes : {1U, 5U}) {
        SCOPED_TRACE(bytes);
        const PlannedReads reads{{.node = "/info", .bytes_at_once = bytes}};
        EXPECT_EQ(pid(), "4711");
        EXPECT_GT(reads.reads(), 10);
    }
}

TEST_F(BrokenProcessNode, MayBeADirectory)
{
    std::filesystem::remove(path());
    std::filesystem::create_directory(path());
    pid();
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output_, kNoPid);
}

}  // namespace
}  // namespace nimba::test
