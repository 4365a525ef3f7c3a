// SPDX-License-Identifier: MIT
#pragma once

#include "driver/machine_driver.hpp"
#include "driver/served_driver.hpp"
#include "machine.hpp"
#include "test_bed.hpp"

#include <filesystem>
#include <memory>

namespace nimba::sim {

// How the drivers' nodes are to be made: as a file system that the machine's drivers answer for, or
// as plain files, which nothing changes.
enum class Drivers { kLiveIfPossible, kLive, kPlain };

// A machine, while it is there.
struct Simulation {
    std::unique_ptr<TestBed> test_bed;
    std::unique_ptr<ServedDriver> driver;  // none: the nodes are plain files
};

// Makes the machine inside `directory`, with the drivers that `make_driver` makes. Where the
// drivers cannot be live, says so in one line on standard error, unless they need not be. Throws
// TestBedError.
Simulation simulate(const Machine& machine, const MakeDriver& make_driver,
                    const std::filesystem::path& directory, Drivers drivers);

}  // namespace nimba::sim
