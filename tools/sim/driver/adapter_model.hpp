// SPDX-License-Identifier: MIT
#pragma once

#include "driver/adapter_state.hpp"
#include "driver/counters.hpp"
#include "machine.hpp"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::sim {

struct ModelNode {
    std::string name;  // its path in its directory
    mode_t mode;
};

// What an adapter's driver shows of the adapter's power, clocks, sensors, counters and memory, and
// what it does when a command is written. All of it depends on the description, the time and the
// commands alone.
class AdapterModel final {
  public:
    explicit AdapterModel(const Adapter& adapter);

    // Makes the time since the machine began go by. An earlier one than before changes nothing.
    void advance_to(std::chrono::nanoseconds time);

    // Says how much the allocations in a segment take. Segments that are not there do not matter.
    void set_used(std::size_t segment, uint64_t bytes);

    // The nodes of a directory, in the order in which it lists them. The one of kProc has no name.
    std::vector<ModelNode> nodes(NodeDirectory directory) const;

    // The text of one of these nodes; nothing if there is no such node.
    std::optional<std::string> read(NodeDirectory directory, std::string_view name) const;

    // Carries out one command. Returns 0; EINVAL if the node does not understand it, which then
    // changes nothing; EACCES if the node takes no commands; ENOENT if there is no such node.
    int write(NodeDirectory directory, std::string_view name, std::string_view text);

    Counters counters() const;

  private:
    AdapterState state_;
};

}  // namespace nimba::sim
