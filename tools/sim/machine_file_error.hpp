// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace nimba::sim {

// A machine that is not known, or whose file cannot be read or does not make sense. The message is
// one line that names the place and says what is wrong.
class MachineFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace nimba::sim
