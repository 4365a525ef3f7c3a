// SPDX-License-Identifier: MIT
#include "tools/smi/capture/node_reader.hpp"
#include "tools/smi/capture/unread.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace nimba::smi {
namespace {

TEST(Unread, WhatIsNotThereIsNoError)
{
    Unread unread;
    unread.add(0, "/a", ENOENT);
    unread.add(0, "/a", 0);
    unread.add(0, "/a", std::string{"ENOENT"});
    EXPECT_TRUE(unread.errors().empty());
    EXPECT_TRUE(unread.problems().empty());
}

TEST(Unread, EachErrorIsOneSentence)
{
    Unread unread;
    unread.add(0, "/a", EACCES);
    unread.add(1, "/a", EACCES);
    unread.add(1, "/b", EACCES);
    unread.add(1, "/c", kNoAnswer);
    unread.add(1, "/d", EIO);
    const auto problems = unread.problems();
    ASSERT_EQ(problems.size(), 3U);
    EXPECT_EQ(problems[0].message, "no permission to read /a and 1 more node: run as root");
    EXPECT_EQ(problems[0].status, ExitStatus::kNoPermission);
    EXPECT_EQ(problems[1].message, "cannot read /d: EIO (see dmesg)");
    EXPECT_EQ(problems[1].status, ExitStatus::kNoAdapter);
    EXPECT_EQ(problems[2].message,
              "no answer from /c: the driver may be blocked (see dmesg), or allow more with "
              "--timeout");
    EXPECT_EQ(problems[2].status, ExitStatus::kWorkerLost);
    // A long series is not told of the same node over and over.
    ASSERT_EQ(unread.errors().size(), 4U);
    EXPECT_EQ(unread.errors()[0].sample, 0U);
    EXPECT_EQ(unread.errors()[2].error, "deadline");
}

}  // namespace
}  // namespace nimba::smi
