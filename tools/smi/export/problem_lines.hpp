// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/exit_status.hpp"

#include <span>
#include <vector>

namespace nimba::smi::exporting {

// The problems of one scrape after the other, each told when it comes up.
class ProblemLines final {
  public:
    // Those of a scrape that the scrape before had none like.
    std::vector<Problem> news(std::span<const Problem> problems);

    // Those that no scrape before had one like.
    std::vector<Problem> never_told(std::span<const Problem> problems);

  private:
    std::vector<Problem> last_;
    std::vector<Problem> ever_;  // of those that are told once and for all
};

}  // namespace nimba::smi::exporting
