// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/report.hpp"

#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

// What a command that shows samples leaves to print, or, in a watch, what it prints at once.
class MonitorOutput final {
  public:
    explicit MonitorOutput(bool watching) : watching_{watching} {}

    // Returns whether more can be written.
    bool write(const std::string& text);

    // A problem that is like an earlier one is not told again.
    void tell(const Problem& problem);

    [[nodiscard]] Report take_report() { return std::move(report_); }

  private:
    bool watching_;
    Report report_;
};

// Adds a problem unless there is one like it. Returns whether it was added.
bool add_unless_known(std::vector<Problem>& problems, const Problem& problem);

}  // namespace nimba::smi
