// SPDX-License-Identifier: MIT
#include "tools/smi/export/machine_scraper.hpp"

#include "tools/smi/export/ask_in_time.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/snapshot/problems.hpp"
#include "tools/smi/tool_version.hpp"
#include "tools/smi/worker/requests.hpp"

#include <future>

#include <fmt/core.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace nimba::smi::exporting {
namespace {

constexpr std::chrono::seconds kDiscoveryAge{60};

// No call may take longer than a collector.
Options bounded(Options options)
{
    options.timeout = std::min(options.timeout, options.exporting.deadline);
    return options;
}

}  // namespace

MachineScraper::MachineScraper(const Options& options) : options_{bounded(options)}
{
    machine_.tool_version = kToolVersion;
}

MachineFigures MachineScraper::scrape(int stop)
{
    const auto begin = Clock::now();
    if (!discovered_ || begin - *discovered_ >= kDiscoveryAge) {
        machine_.runs.clear();
        machine_.problems.clear();
        machine_.library.reset();
        machine_.adapters_found.reset();
        discovered_.reset();
        run(kLibraryCollector, kVersionRequest, &MachineScraper::ask_library, stop);
        run(kDiscoveryCollector, kDiscoverRequest, &MachineScraper::discover, stop);
    }
    MachineFigures figures = machine_;
    scrape_adapters(stop, figures);
    figures.duration = Clock::now() - begin;
    return figures;
}

void MachineScraper::run(std::string_view collector, std::string_view request,
                         bool (MachineScraper::*work)(int stop), int stop)
{
    CollectorRun& run = machine_.runs.emplace_back();
    run.collector = collector;
    if (stuck_.has(request)) {
        machine_.problems.push_back(stuck_problem(collector, "", std::nullopt));
        return;
    }
    const auto begin = Clock::now();
    try {
        run.success = (this->*work)(stop);
    } catch (const std::exception& exception) {
        machine_.problems.push_back({ExitStatus::kFailed, std::nullopt, std::nullopt,
                                     fmt::format("{}: {}", collector, exception.what())});
    }
    run.duration = Clock::now() - begin;
}

template <typename Reading>
std::optional<Reading> MachineScraper::ask(const char* subject, std::string_view request, int stop)
{
    const auto deadline = options_.exporting.deadline;
    WorkerProcess worker{{options_.library, options_.verbose, std::nullopt}};
    const Reply reply =
        ask_in_time(worker, request, {options_.timeout, deadline, deadline, Overtime::kNone}, stop)
            .reply;
    std::vector<Problem> problems;
    auto reading = accept<Reading>({subject, std::nullopt, unfinished_adapter(worker.progress())},
                                   reply, problems);
    if (!reading && problems.front().status == ExitStatus::kWorkerLost) {
        ++machine_.workers_replaced;
    }
    stuck_.add(request, std::move(worker));
    for (const Problem& problem : problems) {
        add_unless_told(machine_.problems, problem);
    }
    return reading;
}

bool MachineScraper::ask_library(int stop)
{
    machine_.library = ask<LibraryVersion>("version", kVersionRequest, stop);
    return machine_.library.has_value();
}

bool MachineScraper::discover(int stop)
{
    const auto begin = Clock::now();
    const auto discovery = ask<Discovery>("discovery", kDiscoverRequest, stop);
    if (!discovery) {
        return false;
    }
    machine_.adapters_found = discovery->slots.size();
    take_in(chosen_adapters(*discovery, options_.adapter, machine_.problems));
    if (!posts_.empty()) {
        discovered_ = begin;
    }
    return true;
}

void MachineScraper::take_in(std::vector<SlotIdentity> found)
{
    for (SlotIdentity& adapter : found) {
        const auto is_same = [&](const Post& post) { return post.scraper.adapter() == adapter; };
        if (std::ranges::any_of(posts_, is_same)) {
            continue;
        }
        posts_.remove_if([&](const Post& post) {
            const SlotIdentity& known = post.scraper.adapter();
            return known.slot == adapter.slot || known.bus_id == adapter.bus_id;
        });
        const auto behind = std::ranges::find_if(
            posts_, [&](const Post& post) { return post.scraper.adapter().slot > adapter.slot; });
        posts_.emplace(behind, options_, std::move(adapter));
    }
}

void MachineScraper::scrape_adapters(int stop, MachineFigures& figures)
{
    figures.adapters.resize(posts_.size());
    std::vector<std::future<void>> under_way;
    auto next = figures.adapters.begin();
    for (Post& post : posts_) {
        under_way.push_back(post.thread.start(
            [&post, &adapter = *next++, stop] { adapter = post.scraper.scrape(stop); }));
    }
    // All of them end before what one of them threw leaves.
    std::ranges::for_each(under_way, [](const auto& done) { done.wait(); });
    std::ranges::for_each(under_way, [](auto& done) { done.get(); });
}

}  // namespace nimba::smi::exporting
