// SPDX-License-Identifier: MIT
#pragma once

#include "driver/adapter_path.hpp"
#include "driver/fault.hpp"
#include "driver/opening_faults.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace nimba::sim {

// The faults that are switched on. Where several fit a node, each has its effect; of one kind the
// earliest that befalls it. Paths are those of a LiveDriver. Where virtual memory has a directory
// beside the debug directory, faults know it as "qv" in the debug directory. Every member may be
// called from several threads at once.
class FaultPlan {
  public:
    using Time = std::chrono::nanoseconds;
    // Tells the time since some moment; never goes back.
    using Clock = std::function<Time()>;

    // `cards_with_qv_beside`: of the adapters that have such a directory.
    explicit FaultPlan(Clock clock = monotonic_time, std::set<int> cards_with_qv_beside = {});

    void add(const Fault& fault);

    // Switches everything off; a driver that was gone comes back.
    void clear();

    // Those that can still befall a node, in the order in which they were switched on.
    std::vector<Fault> faults();

    // Whether the node is not there.
    bool hides(const std::string& path);

    // Counts as one opening.
    OpeningFaults open(const std::string& path, bool directory);

    // Counts as one command. Returns 0, or the error with which it fails.
    int command(const std::string& path);

    // How often the driver has gone away until now, back or not. What was there before it went is
    // dead for ever.
    uint64_t absences(const std::string& path);

    Time now() const { return clock_(); }

    static Time monotonic_time();

  private:
    struct Active {
        Fault fault;
        std::vector<std::string> pattern;
        Time begin;
        std::optional<Time> end;
        uint64_t openings = 0;  // that the fault fits
    };

    // A time without a driver. Remembered for what was open when it began.
    struct Absence {
        std::optional<int> card;
        Time begin;
        std::optional<Time> end;
    };

    static bool fits(const std::optional<int>& card, const AdapterPath& path);
    static bool fits(const Active& active, const AdapterPath& path);
    static bool is_due(Active& active);

    const Clock clock_;
    const std::set<int> cards_with_qv_beside_;
    std::atomic<bool> any_ = false;  // whether there is anything in what follows
    std::mutex mutex_;               // guards what follows
    std::vector<Active> active_;
    std::vector<Absence> absences_;
};

}  // namespace nimba::sim
