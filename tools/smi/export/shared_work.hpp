// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace nimba::smi::exporting {

// Work that is done once for all who asked for it before it began, however many they are.
template <typename Result>
class SharedWork final {
  public:
    using Clock = std::chrono::steady_clock;

    explicit SharedWork(std::function<Result()> work) : work_{std::move(work)} {}

    // What the work gave that began last, if it did not begin before `asked`; else what it gives,
    // or throws, now. One thread at a time does it; the others wait.
    Result get(Clock::time_point asked)
    {
        const std::lock_guard turn{turns_};
        if (!latest_ || begun_ < asked) {
            latest_.reset();
            begun_ = Clock::now();
            latest_ = work_();
        }
        return *latest_;
    }

  private:
    std::function<Result()> work_;
    std::mutex turns_;  // guards what follows
    Clock::time_point begun_;
    std::optional<Result> latest_;
};

}  // namespace nimba::smi::exporting
