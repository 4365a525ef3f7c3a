// SPDX-License-Identifier: MIT
#include "tools/smi/export/adapter_scraper.hpp"

#include "tools/smi/export/ask_in_time.hpp"
#include "tools/smi/export/keep_reading.hpp"
#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/process/discovery_problems.hpp"
#include "tools/smi/snapshot/problems.hpp"
#include "tools/smi/usage/figures.hpp"
#include "tools/smi/worker/requests.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <utility>

namespace nimba::smi::exporting {
namespace {

using std::chrono::milliseconds;

// So that a driver that blocks everywhere does not add up all deadlines.
constexpr int kMostLostInScrape = 2;

// The call that has the driver count engine use.
constexpr std::string_view kSwitchOn = "gpuinfo_set_enable_usage";

// Whether something that is there could not be read. Engine use that this user may not have counted
// is not there.
bool is_grave(const Failure& remark)
{
    return remark.status != ExitStatus::kOk &&
           !(remark.status == ExitStatus::kNoPermission && remark.call == kSwitchOn);
}

bool is_denied(const Problem& problem)
{
    return problem.status == ExitStatus::kNoPermission;
}

Problem no_time_left(const Subject& subject)
{
    return {ExitStatus::kWorkerLost, subject.bus_id, std::nullopt,
            subject.name +
                ": there was no time for all collectors; those left out come first in "
                "the next scrape; the driver may be slow: see dmesg, or allow more with "
                "--deadline"};
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
    : options_{options},
      adapter_{std::move(adapter)},
      subject_{adapter_subject(adapter_)},
      budget_{options_.exporting.deadline}
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
    budget_ = Budget{options_.exporting.deadline};
    std::array<Turn, kCollectorNames.size()> turns{};
    turns.fill(Turn::kAsBefore);
    for (const Collector collector : order_) {
        if (is_wanted(collector) && !interrupted_) {
            turns.at(index_of(collector)) = run(kRows[index_of(collector)], figures, stop);
        }
    }
    std::ranges::stable_sort(order_, {},
                             [&](Collector collector) { return turns.at(index_of(collector)); });
    std::ranges::sort(figures.runs, {}, [](const CollectorRun& run) {
        return std::ranges::find(kCollectorNames, run.collector);
    });
    figures.workers_replaced = replaced_;
    return figures;
}

AdapterScraper::Turn AdapterScraper::run(const Row& row, AdapterFigures& figures, int stop)
{
    CollectorRun run{kCollectorNames.at(index_of(row.collector))};
    problems_.clear();
    const milliseconds allowed = budget_.for_next();
    if (lost_in_scrape_ >= kMostLostInScrape || allowed == milliseconds{0}) {
        problems_.push_back(no_time_left(subject_));
        conclude(figures, run);
        return Turn::kFirst;
    }
    if (stuck_.has(row.request)) {
        problems_.push_back(stuck_problem(run.collector, subject_.name, adapter_.bus_id));
        conclude(figures, run);
        return Turn::kAsBefore;
    }
    const int lost_before = lost_in_scrape_;
    const auto begin = Clock::now();
    deadline_ = begin + allowed;
    run.success = try_to(row, figures, stop);
    const auto took = Clock::now() - begin;
    run.duration = took;
    const bool lost = lost_in_scrape_ > lost_before;
    budget_.spend(took, allowed, lost);
    conclude(figures, run);
    return lost ? Turn::kLast : Turn::kAsBefore;
}

bool AdapterScraper::try_to(const Row& row, AdapterFigures& figures, int stop)
{
    try {
        return (this->*row.run)(figures, stop, row.request);
    } catch (const std::exception& exception) {
        problems_.push_back({ExitStatus::kFailed, adapter_.bus_id, std::nullopt,
                             subject_.name + ": " + exception.what()});
        return false;
    }
}

void AdapterScraper::conclude(AdapterFigures& figures, const CollectorRun& run)
{
    const bool skips = options_.exporting.skip_denied;
    const bool is_all_denied = !problems_.empty() && std::ranges::all_of(problems_, is_denied);
    if (run.success || !skips || !is_all_denied) {
        figures.runs.push_back(run);
    }
    for (const Problem& problem : problems_) {
        add_unless_told(skips && is_denied(problem) ? figures.denied : figures.problems, problem);
    }
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
    const auto left = std::chrono::ceil<milliseconds>(deadline_ - Clock::now());
    ReplyInTime answer = ask_in_time(
        *worker, request, {options_.timeout, left, budget_.for_next(), Overtime::kOneSecond}, stop);
    interrupted_ = interrupted_ || answer.interrupted;
    return std::move(answer.reply);
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
std::optional<Reading> AdapterScraper::ask(int stop, std::string_view request)
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
        add_unless_told(problems_, problem);
    }
    return reading;
}

template <typename Reading>
bool AdapterScraper::ask_for(AdapterFigures& figures, int stop, std::string_view request)
{
    auto reading = ask<Reading>(stop, request);
    if constexpr (requires { reading->stale; }) {
        if (reading && reading->stale) {
            replace_workers();
            reading = ask<Reading>(stop, request);
        }
    }
    if (!reading) {
        return false;
    }
    bool whole = true;
    if constexpr (requires { reading->remarks; }) {
        whole = std::ranges::none_of(reading->remarks, is_grave);
        for (const Problem& problem : reading_problems(subject_, *reading)) {
            add_unless_told(problems_, problem);
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
