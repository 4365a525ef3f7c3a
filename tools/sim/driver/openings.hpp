// SPDX-License-Identifier: MIT
#pragma once

#include "driver/opening_faults.hpp"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace nimba::sim {

// A node that a process has open: what it showed then, or when that process last wrote there.
struct Opening {
    std::string path;
    uint64_t absences = 0;  // of the driver, before
    OpeningFaults faults;
    std::vector<std::string> names;  // of a directory, with "." and ".."
    std::atomic<bool> was_read = false;
    std::mutex text_mutex;  // guards what follows
    std::string text;       // of a file
};

// What processes have open, under the handles by which the kernel names it. Every member may be
// called from several threads at once.
class Openings {
  public:
    // Returns its handle, which no other opening ever has.
    uint64_t add(std::shared_ptr<Opening> opening);

    // The opening of that handle, which the kernel must have.
    std::shared_ptr<Opening> opening(uint64_t handle);

    // The kernel gives the handle back.
    void remove(uint64_t handle);

  private:
    std::mutex mutex_;  // guards what follows
    uint64_t last_handle_ = 0;
    std::unordered_map<uint64_t, std::shared_ptr<Opening>> openings_;
};

}  // namespace nimba::sim
