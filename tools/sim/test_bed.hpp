// SPDX-License-Identifier: MIT
#pragma once

#include "driver/machine_driver.hpp"
#include "drm_driver.hpp"
#include "locked_terminal.hpp"
#include "machine.hpp"

#include <umockdev.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace nimba::sim {

// umockdev ends the program when it cannot remove a test bed, so that is made possible first.
struct TestBedRemoval {
    void operator()(UMockdevTestbed* test_bed) const;
};

// The files and device nodes of a machine, for processes that run with umockdev's preload library
// and with UMOCKDEV_DIR set to root(). The drivers behind the nodes run in a thread of this
// process, which starts here: block the signals that the process waits for before.
class TestBed {
  public:
    // Builds the machine inside `directory`. `driver` is the machine's. What the drivers show are
    // plain files, which show what `plain` does for ever, or without it links to what is mounted at
    // the directory kServedNodes, for which an empty one is made. Opening the name or the command
    // line of an absent process fails. Throws TestBedError.
    TestBed(const Machine& machine, const std::filesystem::path& directory,
            const std::shared_ptr<MachineDriver>& driver, NodeSource* plain);

    const std::filesystem::path& root() const { return root_; }

  private:
    void add_drm_devices(const Machine& machine, const std::shared_ptr<MachineDriver>& driver);
    void add_drm_node(const std::string& parent, const DrmDevice& device, DrmNode node,
                      const DrmDriver& driver);
    void add_description(const std::string& description);
    void add_node_links(const Machine& machine, NodeSource& driver);
    void add_node_files(const Machine& machine, NodeSource& plain);
    void add_process(const Process& process);
    void add_absent_process(int pid, bool live);

    std::vector<std::unique_ptr<DrmDriver>> drivers_;  // in use until the test bed is gone
    std::vector<LockedTerminal> locked_terminals_;
    std::unique_ptr<UMockdevTestbed, TestBedRemoval> test_bed_;
    std::filesystem::path root_;
};

}  // namespace nimba::sim
