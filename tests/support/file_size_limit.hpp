// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace nimba::test {

// No file of the process grows beyond `bytes` in its scope; writing on fails with EFBIG.
class FileSizeLimit final {
  public:
    explicit FileSizeLimit(rlim_t bytes) : previous_handler_{std::signal(SIGXFSZ, SIG_IGN)}
    {
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        const rlimit limit{.rlim_cur = bytes, .rlim_max = previous_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        lift();
        std::signal(SIGXFSZ, previous_handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    // Ends the limit before its scope does.
    void lift() const { ::setrlimit(RLIMIT_FSIZE, &previous_); }

  private:
    void (*previous_handler_)(int);
    rlimit previous_{};
};

}  // namespace nimba::test
