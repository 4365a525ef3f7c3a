// SPDX-License-Identifier: MIT
#include "tools/smi/export/adapter_scraper.hpp"

#include "tools/smi/export/deadline.hpp"
#include "tools/smi/export/keep_reading.hpp"
#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/snapshot/problems.hpp"
#include "tools/smi/usage/figures.hpp"
#include "tools/smi/worker/requests.hpp"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace nimba::smi::exporting {
namespace {

using Clock = std::chrono::steady_clock;

// So that a driver that blocks everywhere does not add up all deadlines.
constexpr int kMostLostInScrape = 2;

bool is_readable(int descriptor)
{
    pollfd state{descriptor, POLLIN, 0};
    return descriptor >= 0 && ::poll(&state, 1, 0) > 0;
}

bool is_grave(const Failure& remark)
{
    return remark.status != ExitStatus::kOk;
}

}  // namespace

struct AdapterScraper::Row {
    Collector collector;
    std::string_view request;
    bool (AdapterScraper::*run)(AdapterFigures&, int stop, std::string_view request);
};

const AdapterScraper::Row AdapterScraper::kRows[] = {
    {Collector::kSummary, kSummaryRequest, &AdapterScraper::ask_for<SummaryReading>},
    {Collector::kClocks, kClocksRequest, &AdapterScraper::ask_for<ClockReading>},
    {Collector::kSettings, kDvfsRequest, &AdapterScraper::ask_for<DvfsReading>},
    {Collector::kSegments, kSegmentsRequest, &AdapterScraper::ask_for<SegmentReading>},
    {Collector::kSensors, kSensorsRequest, &AdapterScraper::ask_for<SensorReading>},
    {Collector::kCounters, kCountersRequest, &AdapterScraper::ask_for<CounterReading>},
    {Collector::kMemory, kMemorySampleRequest, &AdapterScraper::ask_for<MemoryReading>},
    {Collector::kLeaks, kLeaksRequest, &AdapterScraper::ask_for<LeakReading>},
    {Collector::kPageTables, kPageTablesRequest, &AdapterScraper::ask_for<PageTableContents>},
};

AdapterScraper::AdapterScraper(const Options& options, SlotIdentity adapter)
    : options_{options}, adapter_{std::move(adapter)}, subject_{adapter_subject(adapter_)}
{
    for (const Row& row : kRows) {
        if (!options_.exporting.without.test(index_of(row.collector))) {
            order_.push_back(row.collector);
        }
    }
}

AdapterScraper::~AdapterScraper()
{
    worker_.reset();
    settings_worker_.reset();
    if (!left_on_) {
        return;
    }
    try {
        auto tidying = start_workers(options_, {&adapter_, 1});
        static_cast<void>(ask_all(tidying, kTidyRequest, {options_.timeout}));
    } catch (const std::exception&) {
        // Nothing more can be done: the machine has no room for another process.
    }
}

AdapterFigures AdapterScraper::scrape(int stop)
{
    AdapterFigures figures;
    figures.state.adapter = adapter_;
    lost_in_scrape_ = 0;
    std::vector<Collector> losing;
    for (const Collector collector : order_) {
        const int lost_before = lost_in_scrape_;
        if (is_wanted(collector) && !interrupted_) {
            run(kRows[index_of(collector)], figures, stop);
        }
        if (lost_in_scrape_ > lost_before) {
            losing.push_back(collector);
        }
    }
    const auto comes_first = [&](Collector collector) {
        return std::ranges::find(losing, collector) == losing.end();
    };
    std::stable_partition(order_.begin(), order_.end(), comes_first);
    std::ranges::sort(figures.runs, {}, [](const CollectorRun& run) {
        return std::ranges::find(kCollectorNames, run.collector);
    });
    figures.workers_replaced = replaced_;
    return figures;
}

void AdapterScraper::run(const Row& row, AdapterFigures& figures, int stop)
{
    CollectorRun& run = figures.runs.emplace_back();
    run.collector = kCollectorNames.at(index_of(row.collector));
    if (lost_in_scrape_ >= kMostLostInScrape) {
        return;
    }
    if (stuck_.has(row.request)) {
        figures.problems.push_back(stuck_problem(run.collector, subject_.name, adapter_.bus_id));
        return;
    }
    const auto begin = Clock::now();
    try {
        run.success = (this->*row.run)(figures, stop, row.request);
    } catch (const std::exception& exception) {
        figures.problems.push_back({ExitStatus::kFailed, adapter_.bus_id, std::nullopt,
                                    subject_.name + ": " + exception.what()});
    }
    run.duration = Clock::now() - begin;
}

bool AdapterScraper::is_wanted(Collector collector) const
{
    return collector != Collector::kPageTables || card_ == 0;
}

std::optional<WorkerProcess>& AdapterScraper::worker_for(std::string_view request)
{
    return request == kDvfsRequest ? settings_worker_ : worker_;
}

Reply AdapterScraper::reply_to(std::string_view request, int stop)
{
    auto& worker = worker_for(request);
    if (!worker) {
        worker.emplace(std::move(start_workers(options_, {&adapter_, 1}).front()));
    }
    const Deadline deadline{options_.exporting.deadline, stop};
    Reply reply =
        ask_all({&*worker, 1}, request, {options_.timeout, deadline.descriptor()}).front();
    auto* const lost = std::get_if<Lost>(&reply);
    if (lost != nullptr && lost->how == kInterrupted) {
        interrupted_ = is_readable(stop);
        lost->how = no_answer_within(options_.exporting.deadline);
        lost->silent = true;
    }
    return reply;
}

void AdapterScraper::lose_worker(std::string_view request)
{
    auto& worker = worker_for(request);
    left_on_ = left_on_ || worker->progress().entered;
    stuck_.add(request, *std::exchange(worker, std::nullopt));
    ++lost_in_scrape_;
    ++replaced_;
}

void AdapterScraper::replace_workers()
{
    worker_.reset();
    settings_worker_.reset();
    ++replaced_;
}

template <typename Reading>
std::optional<Reading> AdapterScraper::ask(AdapterFigures& figures, int stop,
                                           std::string_view request)
{
    const Reply reply = reply_to(request, stop);
    std::vector<Problem> problems;
    auto reading = accept<Reading>(subject_, reply, problems);
    if (!reading && problems.front().status == ExitStatus::kWorkerLost) {
        lose_worker(request);
    }
    if constexpr (requires { reading->bus_id; }) {
        if (reading && reading->bus_id != adapter_.bus_id) {
            problems.push_back(gone_problem(subject_));
            reading.reset();
            replace_workers();
        }
    }
    for (const Problem& problem : interrupted_ ? std::vector<Problem>{} : problems) {
        add_unless_told(figures.problems, problem);
    }
    return reading;
}

template <typename Reading>
bool AdapterScraper::ask_for(AdapterFigures& figures, int stop, std::string_view request)
{
    auto reading = ask<Reading>(figures, stop, request);
    if constexpr (requires { reading->stale; }) {
        if (reading && reading->stale) {
            replace_workers();
            reading = ask<Reading>(figures, stop, request);
        }
    }
    if (!reading) {
        return false;
    }
    bool whole = true;
    if constexpr (requires { reading->remarks; }) {
        whole = std::ranges::none_of(reading->remarks, is_grave);
        for (const Problem& problem : reading_problems(subject_, *reading)) {
            add_unless_told(figures.problems, problem);
        }
    }
    if constexpr (requires { keep(figures, *reading); }) {
        keep(figures, *std::move(reading));
    } else {
        keep_reading(figures, *std::move(reading));
    }
    return whole;
}

void AdapterScraper::keep(AdapterFigures& figures, SummaryReading reading)
{
    if (reading.adapter && reading.adapter->card) {
        card_ = reading.adapter->card;
    }
    figures.state.summary = std::move(reading);
}

void AdapterScraper::keep(AdapterFigures& figures, CounterReading reading)
{
    figures.state.rates = frame_rates(reading, meter_.add(reading.frames));
    figures.state.counters = std::move(reading);
}

}  // namespace nimba::smi::exporting
