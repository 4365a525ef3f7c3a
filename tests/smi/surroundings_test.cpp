// SPDX-License-Identifier: MIT
#include "tools/smi/worker/surroundings.hpp"

#include "tools/descriptor.hpp"

#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <cstdlib>

namespace nimba::smi {
namespace {

TEST(SystemDirectories, AreAppendedOnce)
{
    EXPECT_EQ(with_system_directories("/usr/bin:/bin"), "/usr/bin:/bin:/usr/sbin:/sbin");
    EXPECT_EQ(with_system_directories("/sbin:/usr/bin"), "/sbin:/usr/bin:/usr/sbin");
    EXPECT_EQ(with_system_directories("/bin:/usr/sbin:/sbin"), "/bin:/usr/sbin:/sbin");
    EXPECT_EQ(with_system_directories("/usr/sbin2:/usr"), "/usr/sbin2:/usr:/usr/sbin:/sbin");
}

TEST(SystemDirectories, AreAllThereIsWithoutAPath)
{
    EXPECT_EQ(with_system_directories(""), "/usr/sbin:/sbin");
}

TEST(ShowMessage, TakesTheTextAsText)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(show_message("100%s%n \x1b[2J\n "), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "100%s%n \\x1b[2J\n ");
}

TEST(DropMessage, WritesNothing)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(drop_message("100%s%n\n"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// How a child process in a group of its own ends that runs `body`.
template <typename Body>
int end_of_group_leader(Body body)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0);
        ::_exit(body() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

class EndWithParent : public testing::Test {
  protected:
    void SetUp() override
    {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        worker_end_ = tools::Descriptor{ends[0]};
        parent_end_ = tools::Descriptor{ends[1]};
    }

    tools::Descriptor worker_end_;
    tools::Descriptor parent_end_;
};

TEST_F(EndWithParent, SeesAParentThatIsGone)
{
    const int status = end_of_group_leader([&] {
        const bool before = end_with_parent(worker_end_.get());
        ::shutdown(parent_end_.get(), SHUT_RDWR);
        return before && !end_with_parent(worker_end_.get());
    });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) << status;
}

TEST_F(EndWithParent, TakesItsGroupAlongEvenWhenTheSignalWasBlocked)
{
    const int status = end_of_group_leader([&] {
        sigset_t all;
        ::sigfillset(&all);
        ::sigprocmask(SIG_SETMASK, &all, nullptr);
        end_with_parent(worker_end_.get());
        const pid_t member = ::fork();
        if (member == 0) {
            ::kill(::getppid(), SIGTERM);
        }
        ::waitpid(member, nullptr, 0);
        return false;
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
}

}  // namespace
}  // namespace nimba::smi
