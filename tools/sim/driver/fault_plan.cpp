// SPDX-License-Identifier: MIT
#include "driver/fault_plan.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <random>
#include <string_view>
#include <utility>

namespace nimba::sim {
namespace {

using Components = std::vector<std::string>;

// Where the directories of all adapters are.
struct Root {
    std::string_view name;
    std::string_view before_card;  // in the second component
    NodeDirectory directory;
    std::size_t depth;  // components of the directory's own path
};

constexpr std::array kRoots{
    Root{"dri", "", NodeDirectory::kDebug, 3},
    Root{"info", "", NodeDirectory::kInfo, 2},
    Root{"hwmon", "", NodeDirectory::kHwmon, 3},
    Root{"proc", "gpuinfo_", NodeDirectory::kProc, 2},
};

constexpr std::string_view kVirtualMemory = "qv";  // beside a debug directory

Components split(std::string_view path)
{
    Components components;
    while (!path.empty()) {
        const auto length = std::min(path.find('/'), path.size());
        components.emplace_back(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return components;
}

// Whether the path, or a directory above it, is what the pattern means.
bool starts_with(const Components& path, const Components& pattern)
{
    return path.size() >= pattern.size() &&
           std::equal(pattern.begin(), pattern.end(), path.begin(),
                      [](const std::string& wanted, const std::string& component) {
                          return wanted == "*" || wanted == component;
                      });
}

bool is_for(FaultKind kind, bool directory)
{
    switch (kind) {
        case FaultKind::kOpen:
        case FaultKind::kBlock:
            return true;
        case FaultKind::kRead:
        case FaultKind::kShort:
        case FaultKind::kGarbage:
            return !directory;
        case FaultKind::kList:
            return directory;
        case FaultKind::kWrite:
        case FaultKind::kVanish:
        case FaultKind::kGone:
            break;
    }
    return false;
}

template <typename Period>
bool is_on(const Period& period, FaultPlan::Time now)
{
    return period.begin <= now && (!period.end || now < *period.end);
}

// The same bytes for the same seed and path, every time. One in eight is a null, one a newline.
std::string garbage(uint64_t seed, const std::string& path, uint64_t length)
{
    std::vector<uint64_t> seeds{seed & 0xFFFFFFFF, seed >> 32};
    for (const char letter : path) {
        seeds.push_back(static_cast<unsigned char>(letter));
    }
    std::seed_seq sequence(seeds.begin(), seeds.end());
    std::mt19937 generator{sequence};
    std::string bytes;
    while (bytes.size() < length) {
        const auto number = generator();
        switch (number >> 29) {
            case 0:
                bytes += '\0';
                break;
            case 1:
                bytes += '\n';
                break;
            default:
                bytes += static_cast<char>(number & 0xFF);
        }
    }
    return bytes;
}

// Adds the effect of a fault, unless an earlier one has it.
void apply(const Fault& fault, const std::string& path, OpeningFaults& faults)
{
    switch (fault.kind) {
        case FaultKind::kOpen:
            faults.open_error = faults.open_error == 0 ? fault.error : faults.open_error;
            break;
        case FaultKind::kRead:
            if (!faults.fails_behind) {
                faults.fails_behind = fault.bytes;
                faults.read_error = fault.error;
            }
            break;
        case FaultKind::kShort:
            faults.longest_read = faults.longest_read.value_or(fault.bytes);
            break;
        case FaultKind::kBlock:
            faults.pause = faults.pause.count() == 0 ? fault.length : faults.pause;
            break;
        case FaultKind::kGarbage:
            if (!faults.garbage) {
                faults.garbage = garbage(fault.seed, path, fault.bytes);
            }
            break;
        case FaultKind::kList:
            if (!faults.listing_fails) {
                faults.listing_fails = true;
                faults.entries = fault.entries;
                faults.list_error = fault.error;
            }
            break;
        case FaultKind::kWrite:
        case FaultKind::kVanish:
        case FaultKind::kGone:
            break;
    }
}

}  // namespace

FaultPlan::FaultPlan(Clock clock, std::set<int> cards_with_qv_beside)
    : clock_{std::move(clock)}, cards_with_qv_beside_{std::move(cards_with_qv_beside)}
{
}

FaultPlan::AdapterPath FaultPlan::parse(const std::string& path) const
{
    const Components all = split(path);
    AdapterPath result;
    if (all.size() < 2) {
        return result;
    }
    const auto* const root = std::ranges::find(kRoots, all[0], &Root::name);
    if (root == kRoots.end() || !all[1].starts_with(root->before_card)) {
        return result;
    }
    const char* const begin = all[1].data() + root->before_card.size();
    const char* const end = all[1].data() + all[1].size();
    if (std::from_chars(begin, end, result.card).ptr != end) {
        result.card = -1;
    } else if (all.size() >= root->depth) {
        const bool is_beside = root->directory == NodeDirectory::kDebug &&
                               all[2] == kVirtualMemory &&
                               cards_with_qv_beside_.contains(result.card);
        const std::size_t depth = root->depth - (is_beside ? 1U : 0U);
        result.in_driver = true;
        result.directory = root->directory;
        result.components.assign(all.begin() + static_cast<std::ptrdiff_t>(depth), all.end());
    }
    return result;
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
    active_.push_back({fault, split(fault.path), begin, end});
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
    const AdapterPath place = parse(path);
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
    const AdapterPath place = parse(path);
    const Time time = now();
    const std::scoped_lock lock{mutex_};
    for (Active& active : active_) {
        const Fault& fault = active.fault;
        if (is_for(fault.kind, directory) && is_on(active, time) && fits(active, place) &&
            place.components.size() == active.pattern.size() && is_due(active)) {
            apply(fault, path, faults);
        }
    }
    return faults;
}

int FaultPlan::command(const std::string& path)
{
    if (!any_) {
        return 0;
    }
    const AdapterPath place = parse(path);
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
    const AdapterPath place = parse(path);
    const Time time = now();
    const std::scoped_lock lock{mutex_};
    return static_cast<uint64_t>(std::ranges::count_if(absences_, [&](const Absence& absence) {
        return absence.begin <= time && fits(absence.card, place);
    }));
}

}  // namespace nimba::sim
