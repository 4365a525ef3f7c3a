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

  private:
    std::vector<Problem> last_;
};

}  // namespace nimba::smi::exporting
