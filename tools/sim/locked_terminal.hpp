// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace nimba::sim {

// A character device that exists but that nobody, root included, can open: a pseudo-terminal that
// was never unlocked.
class LockedTerminal {
  public:
    // Throws TestBedError.
    LockedTerminal();
    ~LockedTerminal();
    LockedTerminal(LockedTerminal&& other) noexcept;
    LockedTerminal& operator=(LockedTerminal&&) = delete;
    LockedTerminal(const LockedTerminal&) = delete;
    LockedTerminal& operator=(const LockedTerminal&) = delete;

    // The device's path, such as "/dev/pts/3"; it exists as long as this object.
    const std::string& path() const { return path_; }

  private:
    int controller_;
    std::string path_;
};

}  // namespace nimba::sim
