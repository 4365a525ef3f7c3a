// SPDX-License-Identifier: MIT
// Scrapes one adapter, in a worker of its own.
#pragma once

#include "tools/smi/export/budget.hpp"
#include "tools/smi/export/collectors.hpp"
#include "tools/smi/export/figures.hpp"
#include "tools/smi/export/stuck_workers.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/process/worker_process.hpp"
#include "tools/smi/usage/frame_meter.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace nimba::smi::exporting {

class AdapterScraper final {
  public:
    AdapterScraper(const Options& options, SlotIdentity adapter);
    AdapterScraper(const AdapterScraper&) = delete;
    AdapterScraper& operator=(const AdapterScraper&) = delete;

    // Ends the worker, and switches off the usage accounting that lost ones have left on.
    ~AdapterScraper();

    [[nodiscard]] const SlotIdentity& adapter() const { return adapter_; }

    // Runs the collectors, always in the same thread. One that fails, or does not answer by its
    // deadline, costs its own figures alone. When too many have lost their worker in one scrape, or
    // the budget of all is spent, those behind are left out. The next time these come first, and
    // those that lost their worker last. `stop`: see Patience; figures of a scrape that was
    // interrupted are incomplete.
    AdapterFigures scrape(int stop);

  private:
    using Clock = std::chrono::steady_clock;

    struct Row;
    static const Row kRows[];

    // A collector's place in the next scrape.
    enum class Turn : uint8_t { kFirst, kAsBefore, kLast };

    template <typename Reading>
    bool ask_for(AdapterFigures& figures, int stop, std::string_view request);

    // The reading, or nothing and a problem of the collector. A worker that cannot go on is
    // replaced.
    template <typename Reading>
    std::optional<Reading> ask(int stop, std::string_view request);

    Turn run(const Row& row, AdapterFigures& figures, int stop);

    // What a collector does, and whether it read all there is.
    bool try_to(const Row& row, AdapterFigures& figures, int stop);

    // Takes the run and its problems into the figures.
    void conclude(AdapterFigures& figures, const CollectorRun& run);
    [[nodiscard]] bool is_wanted(Collector collector) const;
    std::optional<WorkerProcess>& worker_for(std::string_view request);
    Reply reply_to(std::string_view request, int stop);

    // The worker for this request has been lost.
    void lose_worker(std::string_view request);

    // No worker can find the adapter again as it was.
    void replace_workers();

    void keep(AdapterFigures& figures, SummaryReading reading);
    void keep(AdapterFigures& figures, CounterReading reading);

    const Options& options_;
    SlotIdentity adapter_;
    Subject subject_;
    std::vector<Collector> order_;
    std::optional<WorkerProcess> worker_;
    std::optional<WorkerProcess> settings_worker_;  // which they leave at no adapter
    StuckWorkers stuck_;
    std::optional<int> card_;  // once it is known
    FrameMeter meter_;
    Budget budget_;  // of the scrape
    int lost_in_scrape_ = 0;
    Clock::time_point deadline_;     // of the collector
    std::vector<Problem> problems_;  // of the collector
    bool interrupted_ = false;
    bool left_on_ = false;  // a worker was lost that may have left usage accounting on
    uint64_t replaced_ = 0;
};

}  // namespace nimba::smi::exporting
