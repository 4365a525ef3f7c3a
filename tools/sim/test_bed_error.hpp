// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace nimba::sim {

// The simulated machine could not be made on this one. The message is one line.
class TestBedError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace nimba::sim
