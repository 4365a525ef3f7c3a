// SPDX-License-Identifier: MIT
#pragma once

#include "nimba_mgmt_interface.h"

#include <utility>

namespace nimba::test {

// The library's messages go to this callback for the length of its scope.
class ScopedPrintCallback final {
  public:
    explicit ScopedPrintCallback(nimba_print_callback callback)
        : previous_{std::exchange(pServerPrintCallback, callback)}
    {
    }
    ~ScopedPrintCallback() { pServerPrintCallback = previous_; }
    ScopedPrintCallback(const ScopedPrintCallback&) = delete;
    ScopedPrintCallback& operator=(const ScopedPrintCallback&) = delete;

  private:
    nimba_print_callback previous_;
};

}  // namespace nimba::test
