// SPDX-License-Identifier: MIT
#include "tools/smi/worker/surroundings.hpp"

#include "tools/smi/descriptor.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>

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

TEST(EndWithParent, SeesAParentThatIsGone)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    const Descriptor worker_end{ends[0]};
    Descriptor parent_end{ends[1]};
    EXPECT_TRUE(end_with_parent(worker_end.get()));
    parent_end.reset();
    EXPECT_FALSE(end_with_parent(worker_end.get()));
}

}  // namespace
}  // namespace nimba::smi
