// SPDX-License-Identifier: MIT
// The listing of a directory.
#pragma once

#include "core/handles.hpp"

namespace nimba {

// The entries of an open directory in the order in which the system lists them, without "." and
// "..".
class Entries final {
  public:
    explicit Entries(Directory directory) : directory_{std::move(directory)} {}

    // The next name, valid until the next call; null at the end and when the listing fails.
    const char* next();

    // Whether the listing ended before its end.
    [[nodiscard]] bool failed() const { return failed_; }

    // The directory's descriptor.
    [[nodiscard]] int fd() const { return ::dirfd(directory_.get()); }

  private:
    Directory directory_;
    bool failed_ = false;
};

}  // namespace nimba
