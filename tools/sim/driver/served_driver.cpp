// SPDX-License-Identifier: MIT
#include "driver/served_driver.hpp"

#include <set>
#include <utility>

namespace nimba::sim {
namespace {

std::set<int> cards_with_qv_beside(const Machine& machine)
{
    std::set<int> cards;
    for (const Adapter& adapter : machine.adapters) {
        if (has_virtual_memory_beside(adapter)) {
            cards.insert(adapter.drm.card);
        }
    }
    return cards;
}

}  // namespace

ServedDriver::ServedDriver(std::shared_ptr<NodeSource> driver, const Machine& machine,
                           const std::filesystem::path& directory)
    : driver_{std::move(driver)},
      faults_{FaultPlan::monotonic_time, cards_with_qv_beside(machine)},
      command_control_{*driver_, faults_},
      fault_control_{command_control_, faults_},
      file_system_{fault_control_, faults_, directory}
{
    for (const Fault& fault : machine.faults) {
        faults_.add(fault);
    }
}

}  // namespace nimba::sim
