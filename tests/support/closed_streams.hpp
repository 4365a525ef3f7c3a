// SPDX-License-Identifier: MIT
// Looks at the streams of a program as they are closed. Link closed_streams.cpp: its fclose stands
// before the C library's in the whole program.
#pragma once

#include <string>
#include <vector>

namespace nimba::test {

// The streams on one path that are closed during its life; there is one at a time.
class ClosedStreams final {
  public:
    explicit ClosedStreams(std::string path);
    ~ClosedStreams();
    ClosedStreams(const ClosedStreams&) = delete;
    ClosedStreams& operator=(const ClosedStreams&) = delete;

    // For each of them whether a program started meanwhile would not have inherited it.
    const std::vector<bool>& closes_on_exec() const { return closes_on_exec_; }

    void look_at(int fd);

  private:
    std::string path_;
    std::vector<bool> closes_on_exec_;
};

}  // namespace nimba::test
