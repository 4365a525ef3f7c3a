// SPDX-License-Identifier: MIT
// How far nodes are read that are interrupted, come in parts or have no end.
#include "core/node_access.hpp"
#include "support/descriptor.hpp"
#include "support/planned_reads.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <string>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

class NodeReading : public testing::Test {
  protected:
    std::string read()
    {
        std::array<char, 16> buffer{};
        const int count = read_node_at(directory.get(), "node", buffer.data(), buffer.size());
        return {buffer.data(), static_cast<std::size_t>(count)};
    }

    int scan(int& value) const { return scanf_node_at(directory.get(), "node", "%d", &value); }

    TempDirectory nodes;
    Descriptor directory{::open(nodes.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
};

TEST_F(NodeReading, TakesUpAnInterruptedReadAgain)
{
    nodes.write("node", "1234\n");
    for (const std::size_t bytes : {0U, 1U, 4U, 5U}) {
        SCOPED_TRACE(bytes);
        const PlannedReads reads{
            {.node = "/node", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        EXPECT_EQ(read(), "1234\n");
        EXPECT_EQ(reads.failures_left(), 0);
    }
}

TEST_F(NodeReading, TakesUpAnInterruptedScanAgain)
{
    nodes.write("node", "1234\n");
    for (const std::size_t bytes : {0U, 1U, 4U, 5U}) {
        SCOPED_TRACE(bytes);
        const PlannedReads reads{
            {.node = "/node", .bytes_before_failure = bytes, .error = EINTR, .failures = 3}};
        int value = 0;
        EXPECT_EQ(scan(value), 1);
        EXPECT_EQ(value, 1234);
        EXPECT_EQ(reads.failures_left(), 0);
    }
}

TEST_F(NodeReading, JoinsWhatComesInParts)
{
    nodes.write("node", "1234\n");
    const PlannedReads reads{{.node = "/node", .bytes_at_once = 2}};
    EXPECT_EQ(read(), "1234\n");
    int value = 0;
    EXPECT_EQ(scan(value), 1);
    EXPECT_EQ(value, 1234);
}

TEST_F(NodeReading, EndsWhereAReadFails)
{
    nodes.write("node", "1234\n");
    const PlannedReads reads{
        {.node = "/node", .bytes_before_failure = 2, .error = EIO, .failures = 1}};
    EXPECT_EQ(read(), "12");
    EXPECT_EQ(reads.failures_left(), 0);
}

TEST_F(NodeReading, ScansTheFirstPageOfANumberWithoutEnd)
{
    nodes.write("node", std::string(4095, '0') + "78");
    int value = 0;
    EXPECT_EQ(scan(value), 1);
    EXPECT_EQ(value, 7);
}

TEST_F(NodeReading, TakesANulForACharacterThatIsNoNumber)
{
    nodes.write("node", std::string{"\0007", 2});
    int value = 42;
    EXPECT_EQ(scan(value), 0);
    EXPECT_EQ(value, 42);
    nodes.write("node", std::string{"5\0007", 3});
    EXPECT_EQ(scan(value), 1);
    EXPECT_EQ(value, 5);
}

}  // namespace
}  // namespace nimba::test
