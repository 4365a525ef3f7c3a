// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/memory/reading.hpp"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

struct Process {
    int pid = 0;
    std::string name;  // empty when it is not known

    bool operator==(const Process&) const = default;
};

// Who holds the devices of one adapter.
class Owners final {
  public:
    Owners() = default;
    explicit Owners(std::span<const DeviceContext> contexts) { learn(contexts); }

    // Takes the contexts' devices to be those processes' from now on. Other devices stay with those
    // that were last known to hold them, who may have gone without giving their memory back.
    void learn(std::span<const DeviceContext> contexts);

    // The processes that hold a device, each once; none when they are not known.
    [[nodiscard]] std::span<const Process> of(uint32_t device) const;

    [[nodiscard]] const std::map<uint32_t, std::vector<Process>>& devices() const
    {
        return devices_;
    }

  private:
    std::map<uint32_t, std::vector<Process>> devices_;
};

// The pids and the names of processes, "4100001, 4100002" and "maze, -"; `none` without any.
std::string pids_text(std::span<const Process> processes, const std::string& none);
std::string names_text(std::span<const Process> processes, const std::string& none);

}  // namespace nimba::smi
