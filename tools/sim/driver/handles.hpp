// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <queue>
#include <set>
#include <utility>
#include <vector>

namespace nimba::sim {

// Gives out handles: always the lowest that is free, so that one that was given back soon comes
// again.
class Handles {
  public:
    // Handles in `reserved` are never given out.
    explicit Handles(std::set<int64_t> reserved) : reserved_{std::move(reserved)} {}

    int64_t take()
    {
        if (!given_back_.empty()) {
            const int64_t handle = given_back_.top();
            given_back_.pop();
            return handle;
        }
        while (reserved_.contains(next_)) {
            ++next_;
        }
        return next_++;
    }

    void give_back(int64_t handle) { given_back_.push(handle); }

  private:
    std::set<int64_t> reserved_;
    std::priority_queue<int64_t, std::vector<int64_t>, std::greater<>> given_back_;
    int64_t next_ = 1;
};

}  // namespace nimba::sim
