// SPDX-License-Identifier: MIT
// Scrapes the machine.
#pragma once

#include "tools/smi/export/adapter_scraper.hpp"
#include "tools/smi/export/figures.hpp"
#include "tools/smi/export/stuck_workers.hpp"
#include "tools/smi/export/task_thread.hpp"
#include "tools/smi/options.hpp"

#include <chrono>
#include <list>
#include <optional>
#include <string_view>
#include <vector>

namespace nimba::smi::exporting {

class MachineScraper final {
  public:
    explicit MachineScraper(const Options& options);

    // What the machine tells now. Adapters are asked at the same time, each from a thread of its
    // own. They are discovered at the first scrape, then once a minute, and at each scrape behind
    // one that could not. An adapter that was found once stays until another takes its slot.
    // `stop`: see Patience.
    MachineFigures scrape(int stop);

  private:
    using Clock = std::chrono::steady_clock;

    // The scraper ends before the thread, with which its worker would end by force.
    struct Post {
        TaskThread thread;
        AdapterScraper scraper;

        Post(const Options& options, SlotIdentity adapter) : scraper{options, std::move(adapter)} {}
    };

    // Runs a collector of the machine, whose failure costs its own figures alone.
    void run(std::string_view collector, std::string_view request,
             bool (MachineScraper::*work)(int stop), int stop);

    // The reading of a worker that ends with it, or nothing and a problem.
    template <typename Reading>
    std::optional<Reading> ask(const char* subject, std::string_view request, int stop);

    bool ask_library(int stop);
    bool discover(int stop);
    void take_in(std::vector<SlotIdentity> found);
    void scrape_adapters(int stop, MachineFigures& figures);

    Options options_;
    std::list<Post> posts_;
    MachineFigures machine_;  // of the last discovery, without adapters
    StuckWorkers stuck_;
    std::optional<Clock::time_point> discovered_;
};

}  // namespace nimba::smi::exporting
