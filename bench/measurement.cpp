// SPDX-License-Identifier: MIT
#include "bench/measurement.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace nimba::bench {
namespace {

std::string key(const std::string& name, int size)
{
    return fmt::format("{}|{}", name, size);
}

class Collector final : public benchmark::BenchmarkReporter {
  public:
    explicit Collector(Samples& samples) : samples_{samples} {}

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                samples_.add(run.run_name.function_name, run.GetAdjustedRealTime());
            }
        }
    }

  private:
    Samples& samples_;
};

int repetitions_for(int size, int repetitions)
{
    return repetitions * std::clamp(2 * kSmallTreeMax / size, 1, 5);
}

// Has the framework put all repetitions in one random order.
void interleave()
{
    std::string program = "nimba-bench";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::array<char*, 3> arguments{program.data(), interleaving.data(), nullptr};
    int argument_count = 2;
    benchmark::Initialize(&argument_count, arguments.data());
}

}  // namespace

bool Samples::has(const std::string& name, int size) const
{
    return samples_.contains(key(name, size));
}

double Samples::median(const std::string& name, int size) const
{
    std::vector<double> sorted = samples_.at(key(name, size));
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

void measure(const std::vector<Case>& cases, int repetitions, Samples& samples)
{
    interleave();
    benchmark::ClearRegisteredBenchmarks();
    for (const Case& item : cases) {
        auto* const registered =
            benchmark::RegisterBenchmark(key(item.name, item.size).c_str(), item.run);
        registered->Iterations(item.iterations)
            ->Repetitions(repetitions_for(item.size, repetitions))
            ->Unit(benchmark::kNanosecond);
        if (item.manual_time) {
            registered->UseManualTime();
        } else {
            registered->UseRealTime();
        }
    }
    Collector collector{samples};
    benchmark::RunSpecifiedBenchmarks(&collector);
}

}  // namespace nimba::bench
