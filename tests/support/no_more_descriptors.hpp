// SPDX-License-Identifier: MIT
#pragma once

#include "support/descriptor.hpp"

#include <fcntl.h>

#include <sys/resource.h>

namespace nimba::test {

// In its scope the process can open no further descriptor.
class NoMoreDescriptors final {
  public:
    NoMoreDescriptors()
    {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit full{first_free_descriptor(), before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &full);
    }
    ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    NoMoreDescriptors(const NoMoreDescriptors&) = delete;
    NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

  private:
    static rlim_t first_free_descriptor()
    {
        return static_cast<rlim_t>(Descriptor{::open("/dev/null", O_RDONLY | O_CLOEXEC)}.get());
    }

    rlimit before_{};
};

}  // namespace nimba::test
