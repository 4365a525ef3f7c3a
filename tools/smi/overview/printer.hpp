// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/monitor/printer.hpp"
#include "tools/smi/overview/style.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"

#include <cstddef>
#include <optional>
#include <string>

namespace nimba::smi {

// Prints the snapshots of the overview in the form that the options ask for. In a watch each tells
// its time, and a document is one line.
class OverviewPrinter final {
  public:
    // `top`: how many rows the table of the processes has at most.
    OverviewPrinter(MonitorForm form, bool watching, std::optional<std::size_t> top,
                    OverviewStyle style)
        : form_{form}, watching_{watching}, top_{top}, style_{style}
    {
    }

    // What stands before the first snapshot.
    [[nodiscard]] std::string begin() const;

    [[nodiscard]] std::string snapshot(const MachineSnapshot& snapshot);

  private:
    [[nodiscard]] std::string text(const MachineSnapshot& snapshot);
    [[nodiscard]] std::string csv(const MachineSnapshot& snapshot) const;
    [[nodiscard]] std::string json(const MachineSnapshot& snapshot) const;

    MonitorForm form_;
    bool watching_;
    std::optional<std::size_t> top_;
    OverviewStyle style_;
    bool is_first_ = true;
};

}  // namespace nimba::smi
