// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/directory_lock.hpp"

#include <fcntl.h>

#include <sys/file.h>

#include <cerrno>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{10};  // between two tries

}  // namespace

DirectoryLock::DirectoryLock(const std::string& directory, std::chrono::milliseconds patience,
                             const StopSignals& signals)
    : directory_{::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)}
{
    const auto end = Clock::now() + patience;
    bool stopping = false;
    do {
        if (::flock(directory_.get(), LOCK_EX | LOCK_NB) == 0) {
            state_ = LockState::kHeld;
            return;
        }
        state_ = errno == EWOULDBLOCK ? LockState::kBusy : LockState::kUnavailable;
        stopping = state_ != LockState::kBusy || Clock::now() >= end ||
                   signals.wait_until(Clock::now() + kPause);
    } while (!stopping);
}

}  // namespace nimba::smi
