// SPDX-License-Identifier: MIT
#pragma once

#include "support/descriptor.hpp"

#include <sys/mman.h>

#include <array>
#include <cstdio>
#include <string>

namespace nimba::test {

// Sends standard output to memory for the length of its scope.
class CapturedStdout final {
  public:
    CapturedStdout()
    {
        std::fflush(stdout);
        ::dup2(memory_.get(), STDOUT_FILENO);
    }
    ~CapturedStdout()
    {
        std::fflush(stdout);
        ::dup2(saved_.get(), STDOUT_FILENO);
    }
    CapturedStdout(const CapturedStdout&) = delete;
    CapturedStdout& operator=(const CapturedStdout&) = delete;

    std::string text() const
    {
        std::fflush(stdout);
        std::string text;
        std::array<char, 4096> piece{};
        ssize_t count = 0;
        while ((count = ::pread(memory_.get(), piece.data(), piece.size(),
                                static_cast<off_t>(text.size()))) > 0) {
            text.append(piece.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    Descriptor memory_{::memfd_create("stdout", MFD_CLOEXEC)};
    Descriptor saved_{::dup(STDOUT_FILENO)};
};

// What `action` writes to standard output. Assertions belong behind the call: a failure's report
// inside it would be captured as well.
template <class Action>
std::string stdout_of(Action&& action)
{
    const CapturedStdout captured;
    action();
    return captured.text();
}

}  // namespace nimba::test
