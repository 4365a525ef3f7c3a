// SPDX-License-Identifier: MIT
#pragma once

#include "driver/adapter_model.hpp"
#include "driver/allocations.hpp"
#include "driver/fixed_nodes.hpp"
#include "driver/machine_driver.hpp"
#include "driver/virtual_memory.hpp"
#include "machine.hpp"

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace nimba::sim {

// What the drivers of a machine's adapters show now.
class LiveDriver final : public MachineDriver {
  public:
    // Time begins here. Every call of a member first makes happen what is due.
    explicit LiveDriver(Machine machine, Clock clock = monotonic_time);

    std::optional<NodeAttributes> look_up(const std::string& path) override;
    std::vector<std::string> list(const std::string& directory) override;
    std::optional<std::string> read(const std::string& file) override;
    int write(const std::string& file, std::string_view text) override;

    Counters counters(int card) override;

    static std::chrono::nanoseconds monotonic_time();

  private:
    // The video memory of an adapter.
    struct Memory {
        Memory(const VideoMemory& description, bool va_driver,
               const std::vector<Process>& processes)
            : allocations{description, va_driver}, virtual_memory{description, processes}
        {
        }

        Allocations allocations;
        VirtualMemory virtual_memory;
    };

    // A directory that shows the allocations that the simulation makes.
    struct LiveDirectory {
        const Memory* memory;
        AllocationNames names;
        std::vector<std::string> nodes;  // of each allocation
    };

    // A path in such a directory, behind its "/".
    struct Place {
        const LiveDirectory* directory;
        std::string name;
        std::string node;  // empty: the allocation itself

        bool is_directory() const { return node.empty(); }
        bool is_file() const;
    };

    // A node with the page tables of a device context.
    struct Dump {
        const Memory* memory;
        const DeviceContext* context;
    };

    // A node of an adapter's model.
    struct ModelPlace {
        AdapterModel* model;
        NodeDirectory directory;
        std::string name;
    };

    void add(const Adapter& adapter);
    void add_directory(const Adapter& adapter, NodeDirectory directory, const Nodes& texts);
    void set_modes(const Adapter& adapter);
    void add_video_memory(const Adapter& adapter);
    void add_allocation(const Adapter& adapter, const Memory& memory, const Allocation& allocation);
    void add_context(const Adapter& adapter, const Memory& memory, const DeviceContext& context);
    void advance();
    std::optional<Place> find(const std::string& path) const;
    static std::optional<std::string> read(const Place& place);

    const Machine machine_;
    const Clock clock_;
    const std::chrono::nanoseconds start_;
    std::mutex mutex_;  // guards what follows
    FixedNodes fixed_;
    std::map<int, AdapterModel> models_;              // by card
    std::map<int, Memory> memories_;                  // by card
    std::map<std::string, LiveDirectory> live_;       // by their paths, with a "/" behind
    std::map<std::string, Dump> dumps_;               // by their paths
    std::map<std::string, ModelPlace> model_places_;  // by their paths
};

}  // namespace nimba::sim
