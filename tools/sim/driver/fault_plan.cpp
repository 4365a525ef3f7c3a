// SPDX-License-Identifier: MIT
#include "driver/fault_plan.hpp"

#include <algorithm>
#include <utility>

namespace nimba::sim {
namespace {

template <typename Period>
bool is_on(const Period& period, FaultPlan::Time now)
{
    return period.begin <= now && (!period.end || now < *period.end);
}

}  // namespace

FaultPlan::FaultPlan(Clock clock, std::set<int> cards_with_qv_beside)
    : clock_{std::move(clock)}, cards_with_qv_beside_{std::move(cards_with_qv_beside)}
{
}

bool FaultPlan::fits(const std::optional<int>& card, const AdapterPath& path)
{
    return path.card >= 0 && (!card || *card == path.card);
}

// Whether the fault is for the node, or for a directory above it.
bool FaultPlan::fits(const Active& active, const AdapterPath& path)
{
    return path.in_driver && path.directory == active.fault.directory &&
           fits(active.fault.card, path) && starts_with(path.components, active.pattern);
}

FaultPlan::Time FaultPlan::monotonic_time()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

void FaultPlan::add(const Fault& fault)
{
    const Time begin = now() + fault.after;
    const auto end = fault.duration ? std::optional<Time>{begin + *fault.duration} : std::nullopt;
    const std::scoped_lock lock{mutex_};
    active_.push_back({fault, path_components(fault.path), begin, end});
    if (fault.kind == FaultKind::kGone) {
        absences_.push_back({fault.card, begin, end});
    }
    any_ = true;
}

void FaultPlan::clear()
{
    const Time time = now();
    const std::scoped_lock lock{mutex_};
    active_.clear();
    std::erase_if(absences_, [=](const Absence& absence) { return absence.begin > time; });
    for (Absence& absence : absences_) {
        absence.end = std::min(absence.end.value_or(time), time);
    }
    any_ = !absences_.empty();
}

std::vector<Fault> FaultPlan::faults()
{
    const Time time = now();
    std::vector<Fault> faults;
    const std::scoped_lock lock{mutex_};
    for (const Active& active : active_) {
        const bool is_used_up =
            active.fault.times == FaultTimes::kFirst && active.openings >= active.fault.count;
        const bool is_over = active.end && *active.end <= time;
        if (!is_used_up && !is_over) {
            faults.push_back(active.fault);
        }
    }
    return faults;
}

bool FaultPlan::hides(const std::string& path)
{
    if (!any_) {
        return false;
    }
    const AdapterPath place = parse_adapter_path(path, cards_with_qv_beside_);
    const Time time = now();
    const std::scoped_lock lock{mutex_};
    const auto is_gone = [&](const Absence& absence) {
        return is_on(absence, time) && fits(absence.card, place);
    };
    const auto is_vanished = [&](const Active& active) {
        return active.fault.kind == FaultKind::kVanish && is_on(active, time) &&
               fits(active, place);
    };
    return std::ranges::any_of(absences_, is_gone) || std::ranges::any_of(active_, is_vanished);
}

// Counts the opening, or the command.
bool FaultPlan::is_due(Active& active)
{
    ++active.openings;
    switch (active.fault.times) {
        case FaultTimes::kFirst:
            return active.openings <= active.fault.count;
        case FaultTimes::kEvery:
            return active.openings % active.fault.count == 0;
        case FaultTimes::kAlways:
            break;
    }
    return true;
}

OpeningFaults FaultPlan::open(const std::string& path, bool directory)
{
    OpeningFaults faults;
    if (!any_) {
        return faults;
    }
    const AdapterPath place = parse_adapter_path(path, cards_with_qv_beside_);
    const Time time = now();
    const std::scoped_lock lock{mutex_};
    for (Active& active : active_) {
        const Fault& fault = active.fault;
        if (befalls_openings(fault.kind, directory) && is_on(active, time) && fits(active, place) &&
            place.components.size() == active.pattern.size() && is_due(active)) {
            add_effect(fault, path, faults);
        }
    }
    return faults;
}

int FaultPlan::command(const std::string& path)
{
    if (!any_) {
        return 0;
    }
    const AdapterPath place = parse_adapter_path(path, cards_with_qv_beside_);
    const Time time = now();
    int error = 0;
    const std::scoped_lock lock{mutex_};
    for (Active& active : active_) {
        if (active.fault.kind == FaultKind::kWrite && is_on(active, time) && fits(active, place) &&
            place.components.size() == active.pattern.size() && is_due(active)) {
            error = error == 0 ? active.fault.error : error;
        }
    }
    return error;
}

uint64_t FaultPlan::absences(const std::string& path)
{
    if (!any_) {
        return 0;
    }
    const AdapterPath place = parse_adapter_path(path, cards_with_qv_beside_);
    const Time time = now();
    const std::scoped_lock lock{mutex_};
    return static_cast<uint64_t>(std::ranges::count_if(absences_, [&](const Absence& absence) {
        return absence.begin <= time && fits(absence.card, place);
    }));
}

}  // namespace nimba::sim
