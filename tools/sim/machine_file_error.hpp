// SPDX-License-Identifier: MIT
#pragma once

#include "message.hpp"

#include <stdexcept>
#include <string_view>

namespace nimba::sim {

// A machine that is not known, or whose file cannot be read or does not make sense. The message is
// one line that names the place and says what is wrong.
class MachineFileError : public std::runtime_error {
  public:
    // The text may show bytes of the file, line ends among them.
    explicit MachineFileError(std::string_view text)
        : std::runtime_error{without_control_characters(text)}
    {
    }
};

}  // namespace nimba::sim
