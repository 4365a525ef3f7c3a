// SPDX-License-Identifier: MIT
// The pauses that the library makes. A program that links recorded_pauses.cpp does not sleep: it
// only records for how long it was asked to.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace nimba::test {

using Pauses = std::vector<std::chrono::microseconds>;

// The pauses since the last call, in order.
Pauses take_pauses();

// In its scope `action` runs in every pause.
class DuringPauses final {
  public:
    explicit DuringPauses(std::function<void()> action);
    ~DuringPauses();
    DuringPauses(const DuringPauses&) = delete;
    DuringPauses& operator=(const DuringPauses&) = delete;
};

}  // namespace nimba::test
