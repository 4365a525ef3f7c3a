// SPDX-License-Identifier: MIT
#include "tools/smi/top/events.hpp"

#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/watch/problem_log.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace nimba::smi::top {
namespace {

constexpr std::size_t kMostEvents = 200;

std::string name_of(const SlotIdentity& adapter)
{
    return adapter.name ? fmt::format("{} ({})", adapter.bus_id, *adapter.name) : adapter.bus_id;
}

// What a problem says before its advice, which is for commands that have ended.
std::string without_advice(const std::string& message)
{
    return message.substr(0, message.find("; "));
}

bool is_of_adapter_that_went(const MachineSnapshot& snapshot, const Problem& problem)
{
    return problem.status == ExitStatus::kNoAdapter &&
           std::ranges::any_of(snapshot.adapters, [&](const AdapterState& state) {
               return is_silent(state) && problem.adapter == state.adapter.bus_id;
           });
}

}  // namespace

void EventLog::take(const MachineSnapshot& snapshot)
{
    for (const Problem& problem : snapshot.problems) {
        take_problem(snapshot, problem);
    }
    take_presence(snapshot);
    problems_ = snapshot.problems;
}

void EventLog::take_problem(const MachineSnapshot& snapshot, const Problem& problem)
{
    if (problem.status == ExitStatus::kWorkerLost) {
        add(snapshot.time, without_advice(problem.message) + "; a new worker was started", false);
        return;
    }
    const bool known = std::ranges::any_of(
        problems_, [&](const Problem& before) { return is_alike(before, problem); });
    if (!known && !is_of_adapter_that_went(snapshot, problem)) {
        add(snapshot.time, without_advice(problem.message), false);
    }
}

void EventLog::take_presence(const MachineSnapshot& snapshot)
{
    for (const AdapterState& state : snapshot.adapters) {
        const std::string& bus_id = state.adapter.bus_id;
        if (!is_silent(state) && gone_.erase(bus_id) == 1) {
            add(snapshot.time,
                fmt::format("the driver of adapter {} is back", name_of(state.adapter)), true);
        } else if (is_silent(state) && gone_.insert(bus_id).second) {
            add(snapshot.time,
                fmt::format("the driver of adapter {} is gone or does not answer; it is asked "
                            "again with every sample",
                            name_of(state.adapter)),
                false);
        }
    }
}

void EventLog::add(std::chrono::system_clock::time_point time, std::string text, bool good)
{
    text = printable(text);
    if (!events_.empty() && events_.back().text == text) {
        events_.back().time = time;
        ++events_.back().times;
        return;
    }
    events_.push_back({time, std::move(text), good});
    if (events_.size() > kMostEvents) {
        events_.pop_front();
    }
}

}  // namespace nimba::smi::top
