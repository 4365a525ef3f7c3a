// SPDX-License-Identifier: MIT
// Signals that a host handles while the command for a process's name runs.
#include "process_command_fixture.hpp"
#include "support/planned_reads.hpp"

#include <cerrno>

ssize_t read_of_this_program(int fd, void* buffer, std::size_t size)
{
    return nimba::test::PlannedReads::read(fd, buffer, size);
}

namespace nimba::test {
namespace {

TEST_F(ProcessCommand, NameIsWholeWhenSignalsInterruptItsReading)
{
    make_ps("echo maze\n");
    const PlannedReads reads{{.node = "]",  // of "pipe:[number]"
                              .bytes_at_once = 2,
                              .bytes_before_failure = 2,
                              .error = EINTR,
                              .failures = 3}};
    EXPECT_EQ(name_of("12"), "maze");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(reads.failures_left(), 0);
}

}  // namespace
}  // namespace nimba::test
