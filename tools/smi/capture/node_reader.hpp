// SPDX-License-Identifier: MIT
// Reads nodes, each of which may block, in a process of its own.
#pragma once

#include "tools/descriptor.hpp"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace nimba::smi {

// How reading ended that never did.
inline constexpr int kNoAnswer = -1;

struct ReadNode {
    int error = 0;  // the error number, or kNoAnswer; then there is nothing else
    mode_t mode = 0;
    bool cut = false;  // it goes on
    std::string text{};
};

struct ListedNode {
    int error = 0;
    mode_t mode = 0;
    std::vector<std::string> names{};  // without "." and "..", in listing order
};

class DeadlineReader final {
  public:
    // `timeout`: for each question; a process that does not answer is given up for a new one.
    explicit DeadlineReader(std::chrono::milliseconds timeout) : timeout_{timeout} {}
    DeadlineReader(const DeadlineReader&) = delete;
    DeadlineReader& operator=(const DeadlineReader&) = delete;
    ~DeadlineReader() { give_up(); }

    // The first `limit` bytes of a file. Throws std::system_error when no process can be started.
    ReadNode read(const std::string& path, std::size_t limit);

    // The names in a directory.
    ListedNode list(const std::string& path);

  private:
    struct Answer;

    Answer ask(char question, const std::string& path, std::size_t limit);
    void start();
    void give_up();

    std::chrono::milliseconds timeout_;
    tools::Descriptor channel_;
    pid_t pid_ = -1;
};

}  // namespace nimba::smi
