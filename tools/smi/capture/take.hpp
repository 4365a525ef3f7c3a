// SPDX-License-Identifier: MIT
// Takes a whole capture.
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/exit_status.hpp"
#include "tools/smi/options.hpp"

#include <cstddef>
#include <vector>

namespace nimba::smi {

struct CaptureOutcome {
    archive::Manifest manifest;
    std::size_t nodes = 0;  // that were read, of all samples
    std::vector<Problem> problems;
};

// Writes the archive that the options ask for. Throws archive::ArchiveError when it cannot be
// written; then there is none.
CaptureOutcome take_capture(const Options& options);

}  // namespace nimba::smi
