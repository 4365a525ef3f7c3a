// SPDX-License-Identifier: MIT
// Reads of a driver's nodes that are short or fail. A program that uses this defines
// read_of_this_program, which returns what PlannedReads::read does.
#pragma once

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

// Stands before the C library's read() in the program that defines it. It has a name of its own
// here: where the C library's header checks sizes it defines that function, too.
ssize_t read_of_this_program(int fd, void* buffer, std::size_t size) __asm__("read");

namespace nimba::test {

struct ReadPlan {
    std::string node;                             // how the paths of these nodes end
    std::size_t bytes_at_once = SIZE_MAX;         // what a read gives at most
    std::size_t bytes_before_failure = SIZE_MAX;  // counted over all of them
    int error = 0;
    int failures = 0;  // so many reads in a row fail; those behind them go on
};

// In its scope the nodes are read as planned.
class PlannedReads final {
  public:
    explicit PlannedReads(ReadPlan plan) : plan_{std::move(plan)} { current_ = this; }
    ~PlannedReads() { current_ = nullptr; }
    PlannedReads(const PlannedReads&) = delete;
    PlannedReads& operator=(const PlannedReads&) = delete;

    [[nodiscard]] int failures_left() const { return plan_.failures; }
    [[nodiscard]] std::size_t reads() const { return reads_; }

    static ssize_t read(int fd, void* buffer, std::size_t size)
    {
        static const auto next =
            reinterpret_cast<ssize_t (*)(int, void*, std::size_t)>(::dlsym(RTLD_NEXT, "read"));
        if (current_ == nullptr || !current_->concerns(fd)) {
            return next(fd, buffer, size);
        }
        return current_->read_with(next, fd, buffer, size);
    }

  private:
    bool concerns(int fd) const
    {
        std::error_code closed;
        return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), closed)
            .string()
            .ends_with(plan_.node);
    }

    template <class Read>
    ssize_t read_with(Read next, int fd, void* buffer, std::size_t size)
    {
        ++reads_;
        if (plan_.failures > 0 && plan_.bytes_before_failure == 0) {
            --plan_.failures;
            errno = plan_.error;
            return -1;
        }
        const std::size_t most = plan_.failures > 0 ? plan_.bytes_before_failure : size;
        const ssize_t count = next(fd, buffer, std::min({size, most, plan_.bytes_at_once}));
        if (plan_.failures > 0 && count > 0) {
            plan_.bytes_before_failure -= static_cast<std::size_t>(count);
        }
        return count;
    }

    inline static PlannedReads* current_ = nullptr;
    ReadPlan plan_;
    std::size_t reads_ = 0;
};

}  // namespace nimba::test
