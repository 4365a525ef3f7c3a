// SPDX-License-Identifier: MIT
// Looks at the descriptors and streams of a program as they are closed. Link closed_files.cpp: its
// close and fclose stand before the C library's in the whole program.
#pragma once

#include <string>
#include <vector>

namespace nimba::test {

// The descriptors on one path that are closed during its life, alone or with a stream; there is one
// ClosedFiles at a time.
class ClosedFiles final {
  public:
    explicit ClosedFiles(std::string path);
    ~ClosedFiles();
    ClosedFiles(const ClosedFiles&) = delete;
    ClosedFiles& operator=(const ClosedFiles&) = delete;

    // For each of them whether a program started meanwhile would not have inherited it.
    const std::vector<bool>& closes_on_exec() const { return closes_on_exec_; }

    void look_at(int fd);

  private:
    std::string path_;
    std::vector<bool> closes_on_exec_;
};

}  // namespace nimba::test
