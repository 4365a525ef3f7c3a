// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <chrono>

namespace nimba::smi::exporting {

// The end of a collector's time, as a descriptor for those who wait for a stop.
class Deadline final {
  public:
    // `time`: without any it is over at once. `stop`: a descriptor that becomes readable when the
    // user wants to end. Throws std::system_error when the process has no descriptors left.
    Deadline(std::chrono::milliseconds time, int stop);

    // Readable once the time is over, or `stop` is readable.
    [[nodiscard]] int descriptor() const { return either_.get(); }

  private:
    tools::Descriptor timer_;
    tools::Descriptor either_;
};

}  // namespace nimba::smi::exporting
