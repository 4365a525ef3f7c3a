// SPDX-License-Identifier: MIT
#include "driver/served_driver.hpp"

#include <utility>

namespace nimba::sim {

ServedDriver::ServedDriver(std::unique_ptr<NodeSource> driver, const Machine& machine,
                           const std::filesystem::path& directory)
    : driver_{std::move(driver)},
      control_{*driver_, faults_},
      debug_fs_{control_, faults_, directory}
{
    for (const Fault& fault : machine.faults) {
        faults_.add(fault);
    }
}

}  // namespace nimba::sim
