// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace nimba::archive {

// Why an archive cannot be read or written, in one line without the archive's name.
class ArchiveError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace nimba::archive
