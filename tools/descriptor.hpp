// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace nimba::tools {

// Owns a file descriptor; a negative one is none.
class Descriptor final {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_{fd} {}
    Descriptor(Descriptor&& other) noexcept : fd_{other.release()} {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() { reset(); }

    explicit operator bool() const { return fd_ >= 0; }
    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] int release() { return std::exchange(fd_, -1); }
    void reset()
    {
        if (fd_ >= 0) {
            ::close(release());
        }
    }

  private:
    int fd_ = -1;
};

}  // namespace nimba::tools
