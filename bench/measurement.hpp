// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace nimba::bench {

// One thing to time. `run` times itself in the framework's loop.
struct Case {
    std::string name;
    int size;
    std::int64_t iterations;  // in one repetition
    bool manual_time;         // `run` measures with a clock of its own
    std::function<void(benchmark::State&)> run;
};

// Times of one iteration in nanoseconds, real time, one for each repetition.
class Samples final {
  public:
    void add(const std::string& name, double nanoseconds) { samples_[name].push_back(nanoseconds); }

    bool has(const std::string& name, int size) const;
    // Throws std::out_of_range when there is no such case.
    double median(const std::string& name, int size) const;

  private:
    std::map<std::string, std::vector<double>> samples_;
};

// Trees up to this size are repeated more often: they take less time, and noise takes more of it.
inline constexpr int kSmallTreeMax = 10'000;

// Runs the repetitions of all cases in one random order, so that what else the machine does meets
// all alike, and adds them to `samples`. An exception of a case ends the run.
void measure(const std::vector<Case>& cases, int repetitions, Samples& samples);

}  // namespace nimba::bench
