// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace nimba::bench {

// Owns one file descriptor; -1 is none.
class Descriptor final {
  public:
    explicit Descriptor(int fd = -1) : fd_{fd} {}
    Descriptor(Descriptor&& other) noexcept : fd_{std::exchange(other.fd_, -1)} {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }

    void reset()
    {
        if (fd_ >= 0) {
            ::close(std::exchange(fd_, -1));
        }
    }

  private:
    int fd_;
};

}  // namespace nimba::bench
