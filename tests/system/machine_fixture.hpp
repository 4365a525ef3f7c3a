// SPDX-License-Identifier: MIT
// Discovery and life cycle on a simulated machine. A suite fits one machine only:
//     nimba-sim run --machine two-qv -- system_test '--gtest_filter=TwoQv.*'
#pragma once

#include "discovery_fixture.hpp"

#include <string>
#include <vector>

namespace nimba::test {

// What a slot of the record says about an adapter. The descriptors are checked against these paths;
// an empty one stands for a descriptor that stays as it was.
struct Adapter {
    std::uint32_t chip_id;
    std::string chip_name;
    std::uint16_t vendor;
    std::string busid;
    int card;
    int is_va;
    std::string node;   // in /dev/dri
    std::string info;   // in the PCI directory
    std::string hwmon;  // in the PCI directory
    std::uint32_t luid_low;
    std::uint32_t luid_high;
};

struct ForeignGpu {
    std::uint32_t device;
    std::string chip_name;
    std::uint16_t vendor;
    int card;
    std::string node;
    std::uint32_t luid_low;
    std::uint32_t luid_high;
};

// Whether the descriptor is open on the file or directory.
bool is_open_on(int fd, const std::string& path);

// The text of a file of the machine.
std::string machine_file(const std::string& path);

class MachineTest : public DiscoveryTest {
  protected:
    // Discovers, and expects these adapters, no open file but theirs and the machine's other GPU.
    void expect_found(const std::vector<Adapter>& adapters,
                      const std::vector<ForeignGpu>& foreign = {});

    std::int32_t init(int slot);
    std::int32_t exit(int slot);
    // Starts the library for the slot and stops it, and expects that both work.
    void expect_life(int slot, std::uint32_t chip_id, const std::string& usage_node,
                     const std::string& debug_path);
    // Expects that the library cannot be started for the slot, and which messages it leaves behind
    // that of the preferences.
    void expect_no_life(int slot, const Texts& messages);
    std::string debug_path() const
    {
        return library_.symbol<char[50]>("sys_kernel_debug_ID_dri_ADAPTER_path");
    }
    void* block() const { return library_.symbol<void*>("pdev"); }
    // Whether the first slot's driver answers now; plain files never change. After discover().
    bool drivers_are_live() const;

  private:
    void expect_adapter(int slot, const Adapter& adapter);
    void expect_foreign(const ForeignGpu& gpu);
};

}  // namespace nimba::test
