// SPDX-License-Identifier: MIT
#pragma once

#include "driver/allocations.hpp"
#include "driver/fixed_nodes.hpp"
#include "driver/node_source.hpp"
#include "machine.hpp"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace nimba::sim {

// What the drivers of a machine's adapters show in debugfs, now.
class LiveDriver final : public NodeSource {
  public:
    // Tells the time since some moment; never goes back.
    using Clock = std::function<std::chrono::nanoseconds()>;

    // Time begins here. Every call of a member first makes happen what is due.
    explicit LiveDriver(Machine machine, Clock clock = monotonic_time);

    std::optional<NodeAttributes> look_up(const std::string& path) override;
    std::vector<std::string> list(const std::string& directory) override;
    std::optional<std::string> read(const std::string& file) override;
    int write(const std::string& file, std::string_view text) override;

    static std::chrono::nanoseconds monotonic_time();

  private:
    // A path in an allocations directory, behind its "/".
    struct Place {
        const Allocations* allocations;
        std::string entry;
        std::string node;  // empty: the entry itself
    };

    void add(const Adapter& adapter);
    void add_video_memory(const Adapter& adapter, const std::string& directory);
    void advance();
    std::optional<Place> find(const std::string& path) const;

    const Machine machine_;
    const Clock clock_;
    const std::chrono::nanoseconds start_;
    std::mutex mutex_;  // guards what follows
    FixedNodes fixed_;
    std::map<std::string, Allocations> allocations_;  // by their directory
};

}  // namespace nimba::sim
