// SPDX-License-Identifier: MIT
// What a process id leaves unread of its node, and what it leaves of the text before it.
#include "process_node_fixture.hpp"
#include "support/planned_reads.hpp"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace nimba::test {
namespace {

using RestOfProcessNode = ProcessNode;

TEST_F(RestOfProcessNode, IsNotReadOnceTheProcessIdIsFound)
{
    directory_.write("info", "pid = 4711\nname = x\n");
    const PlannedReads reads{
        {.node = "/info", .bytes_before_failure = 11, .error = EIO, .failures = 1}};
    EXPECT_EQ(pid(), "4711");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(reads.failures_left(), 1);
}

TEST_F(RestOfProcessNode, IsReadUntilTheLineOfTheProcessIdIsWhole)
{
    directory_.write("info", "pid = 4711\nname = x\n");
    const PlannedReads reads{
        {.node = "/info", .bytes_before_failure = 9, .error = EIO, .failures = 1}};
    EXPECT_EQ(pid(), "before");
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(reads.failures_left(), 0);
}

TEST_F(RestOfProcessNode, LeavesNothingOfALongerProcessId)
{
    std::fill(std::begin(device_.pid), std::end(device_.pid), '9');
    directory_.write("info", "pid = 4711\n");
    pid();
    EXPECT_EQ(std::string(std::begin(device_.pid), std::end(device_.pid)),
              "4711" + std::string(44, '\0'));
}

}  // namespace
}  // namespace nimba::test
