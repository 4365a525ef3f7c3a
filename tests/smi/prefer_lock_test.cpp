// SPDX-License-Identifier: MIT
#include "support/temp_directory.hpp"
#include "tools/smi/prefer/directory_lock.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace nimba::smi {
namespace {

using namespace std::chrono_literals;

class DirectoryLocks : public testing::Test {
  protected:
    [[nodiscard]] LockState taken(std::chrono::milliseconds patience) const
    {
        return DirectoryLock{directory.path(), patience, signals}.state();
    }

    test::TempDirectory directory;
    StopSignals signals{SignalEffect::kEndOfRun};
};

TEST_F(DirectoryLocks, AreHeldByOneAtATime)
{
    std::optional<DirectoryLock> first{std::in_place, directory.path(), 0ms, signals};
    EXPECT_EQ(first->state(), LockState::kHeld);
    EXPECT_EQ(taken(0ms), LockState::kBusy);
    EXPECT_EQ(taken(30ms), LockState::kBusy);
    first.reset();
    EXPECT_EQ(taken(0ms), LockState::kHeld);
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST_F(DirectoryLocks, AreNotWaitedForAfterASignal)
{
    const DirectoryLock first{directory.path(), 0ms, signals};
    std::raise(SIGTERM);
    EXPECT_EQ(taken(24h), LockState::kBusy);
}

TEST_F(DirectoryLocks, AreUnavailableWhereNothingCanBeLocked)
{
    EXPECT_EQ((DirectoryLock{directory.path() / "none", 24h, signals}.state()),
              LockState::kUnavailable);
}

}  // namespace
}  // namespace nimba::smi
