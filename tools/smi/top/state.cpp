// SPDX-License-Identifier: MIT
#include "tools/smi/top/state.hpp"

#include "tools/smi/snapshot/derived.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <utility>

namespace nimba::smi::top {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kSamples = 4096;  // as many as a very wide terminal shows
constexpr std::ptrdiff_t kFar = std::numeric_limits<std::ptrdiff_t>::max() / 2;

constexpr std::array kIntervals{milliseconds{100},    milliseconds{200},    milliseconds{500},
                                milliseconds{1'000},  milliseconds{2'000},  milliseconds{5'000},
                                milliseconds{10'000}, milliseconds{30'000}, milliseconds{60'000}};

double seconds_between(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

bool types_text(Key key)
{
    return key >= key_of(' ') && key != Key{0x7F} && key < Key::kBackspace;
}

// Takes away the last character of a UTF-8 text.
void drop_last(std::string& text)
{
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0U) == 0x80U) {
        text.pop_back();
    }
    if (!text.empty()) {
        text.pop_back();
    }
}

}  // namespace

State::State(const Settings& settings, Clock::time_point now)
    : settings_{settings}, opened_{now}, last_{now}, times_{kSamples}, none_{1}
{
}

void State::take(MachineSnapshot snapshot, Clock::time_point now)
{
    events_.take(snapshot);
    // What was not seen while the view was paused leaves a gap.
    if (std::exchange(resumed_, false)) {
        times_.add(std::nullopt);
        for (auto& [slot, histories] : histories_) {
            std::ranges::for_each(histories, [](History& history) { history.add(std::nullopt); });
        }
    }
    times_.add(seconds_between(opened_, now));
    for (const AdapterState& state : snapshot.adapters) {
        auto& histories = histories_[state.adapter.slot];
        histories.resize(kGaugeCount, History{kSamples});
        for (std::size_t gauge = 0; gauge < kGaugeCount; ++gauge) {
            histories[gauge].add(gauges()[gauge].value(state));
        }
    }
    keep_processes(snapshot);
    snapshot_ = std::move(snapshot);
    last_ = now;
    arrange_table();
}

// An adapter that answers but whose processes could not be read has those that it had before.
void State::keep_processes(MachineSnapshot& snapshot)
{
    for (AdapterState& state : snapshot.adapters) {
        const int slot = state.adapter.slot;
        if (state.processes_known) {
            processes_[slot] = {state.processes, snapshot.time};
        } else if (is_silent(state)) {
            processes_.erase(slot);
        } else if (const auto known = processes_.find(slot); known != processes_.end()) {
            state.processes = known->second.table;
        }
    }
}

void State::press(Key key)
{
    if (typing_) {
        type(key);
    } else if (const auto action = action_of(key)) {
        act(*action);
    }
}

void State::type(Key key)
{
    if (key == Key::kEnter) {
        typing_ = false;
    } else if (key == Key::kEscape) {
        typing_ = false;
        table_.filter({});
    } else if (key == Key::kBackspace) {
        std::string text = table_.filter();
        drop_last(text);
        table_.filter(std::move(text));
    } else if (types_text(key)) {
        table_.filter(table_.filter() + key_name(key));
    } else if (key == Key::kUp || key == Key::kDown) {
        move(key == Key::kUp ? -1 : 1);
    }
}

void State::act(Action action)
{
    const auto page = static_cast<std::ptrdiff_t>(page_rows_);
    switch (action) {
        case Action::kQuit:
            over_ = true;
            break;
        case Action::kHelp:
            show_page(Page::kHelp);
            break;
        case Action::kEvents:
            show_page(Page::kEvents);
            break;
        case Action::kNextAdapter:
            show_next_adapter(1);
            break;
        case Action::kPreviousAdapter:
            show_next_adapter(snapshot_ ? snapshot_->adapters.size() - 1 : 0);
            break;
        case Action::kAdapter0:
        case Action::kAdapter1:
        case Action::kAdapter2:
            show_adapter(static_cast<std::size_t>(action) -
                         static_cast<std::size_t>(Action::kAdapter0));
            break;
        case Action::kEveryAdapter:
            all_processes_ = !all_processes_;
            arrange_table();
            break;
        case Action::kSortLeft:
            sort_beside(-1);
            break;
        case Action::kSortRight:
            sort_beside(1);
            break;
        case Action::kReverse:
            table_.sort({table_.order().key, !table_.order().descending});
            break;
        case Action::kSortMemory:
            table_.sort(natural_order(SortKey::kMemory));
            break;
        case Action::kSortPid:
            table_.sort(natural_order(SortKey::kPid));
            break;
        case Action::kFilter:
            page_ = Page::kFigures;
            typing_ = true;
            break;
        case Action::kLeave:
            if (page_ == Page::kFigures) {
                table_.filter({});
            }
            page_ = Page::kFigures;
            break;
        case Action::kUp:
            move(-1);
            break;
        case Action::kDown:
            move(1);
            break;
        case Action::kPageUp:
            move(-page);
            break;
        case Action::kPageDown:
            move(page);
            break;
        case Action::kFirst:
            move(-kFar);
            break;
        case Action::kLast:
            move(kFar);
            break;
        case Action::kPause:
            resumed_ = paused_;
            paused_ = !paused_;
            break;
        case Action::kSlower:
            change_interval(1);
            break;
        case Action::kFaster:
            change_interval(-1);
            break;
        case Action::kPlots:
            choice_ = (choice_ + 1) % kChoices;
            break;
        case Action::kMarks:
            show_next_marks();
            break;
        case Action::kRedraw:
            redraw_ = true;
            break;
    }
}

bool State::take_redraw()
{
    return std::exchange(redraw_, false);
}

const AdapterState* State::adapter() const
{
    return snapshot_ && adapter_ < snapshot_->adapters.size() ? &snapshot_->adapters[adapter_]
                                                              : nullptr;
}

std::optional<std::chrono::system_clock::time_point> State::processes_time() const
{
    const AdapterState* const shown = adapter();
    if (shown == nullptr || shown->processes_known) {
        return std::nullopt;
    }
    const auto known = processes_.find(shown->adapter.slot);
    return known == processes_.end() ? std::nullopt : std::optional(known->second.time);
}

std::vector<std::size_t> State::wanted_gauges() const
{
    std::vector<std::size_t> wanted;
    for (std::size_t gauge = 0; gauge < kGaugeCount; ++gauge) {
        const std::size_t of_its_set = static_cast<std::size_t>(gauges()[gauge].set) + 1;
        if (choice_ == 0 || choice_ == of_its_set) {
            wanted.push_back(gauge);
        }
    }
    return wanted;
}

const History& State::history(std::size_t gauge) const
{
    const AdapterState* const shown = adapter();
    return shown == nullptr ? none_ : histories_.at(shown->adapter.slot)[gauge];
}

std::size_t State::fit_table(std::size_t height)
{
    page_rows_ = height;
    return table_.first(height);
}

std::size_t State::fit_page(std::size_t lines, std::size_t height)
{
    page_rows_ = height;
    const std::size_t most = lines > height ? lines - height : 0;
    scroll_ = std::clamp<std::ptrdiff_t>(scroll_, 0, static_cast<std::ptrdiff_t>(most));
    return static_cast<std::size_t>(scroll_);
}

// The key that shows a page also leaves it.
void State::show_page(Page page)
{
    page_ = page_ == page ? Page::kFigures : page;
    scroll_ = 0;
}

void State::show_adapter(std::size_t index)
{
    if (snapshot_ && index < snapshot_->adapters.size()) {
        adapter_ = index;
        arrange_table();
    }
}

void State::show_next_adapter(std::size_t step)
{
    if (snapshot_ && !snapshot_->adapters.empty()) {
        show_adapter((adapter_ + step) % snapshot_->adapters.size());
    }
}

void State::move(std::ptrdiff_t rows)
{
    if (page_ == Page::kFigures) {
        table_.move(rows);
    } else {
        scroll_ = std::clamp<std::ptrdiff_t>(scroll_ + rows, 0, kFar);
    }
}

void State::sort_beside(std::ptrdiff_t step)
{
    const auto keys = sort_keys(all_processes_);
    const auto here = std::ranges::find(keys, table_.order().key);
    const auto count = static_cast<std::ptrdiff_t>(keys.size());
    // The column of a key that is not there now stands at the right end.
    const std::ptrdiff_t next = ((here - keys.begin()) + step + count) % count;
    table_.sort(natural_order(keys[static_cast<std::size_t>(next)]));
}

void State::change_interval(std::ptrdiff_t step)
{
    milliseconds& interval = settings_.interval;
    if (step > 0) {
        const auto longer = std::ranges::upper_bound(kIntervals, interval);
        interval = longer == kIntervals.end() ? interval : *longer;
    } else {
        const auto same = std::ranges::lower_bound(kIntervals, interval);
        interval = same == kIntervals.begin() ? interval : *std::prev(same);
    }
}

void State::show_next_marks()
{
    if (!settings_.ascii) {
        settings_.marks = settings_.marks == Marks::kBraille  ? Marks::kBlocks
                          : settings_.marks == Marks::kBlocks ? Marks::kAscii
                                                              : Marks::kBraille;
    }
}

void State::arrange_table()
{
    const AdapterState* const shown = adapter();
    if (all_processes_ && snapshot_) {
        table_.show(process_rows(snapshot_->adapters));
    } else if (shown != nullptr) {
        table_.show(process_rows({shown, 1}));
    }
}

std::vector<SortKey> sort_keys(bool all_adapters)
{
    std::vector<SortKey> keys{SortKey::kPid};
    if (all_adapters) {
        keys.push_back(SortKey::kGpu);
    }
    keys.insert(keys.end(),
                {SortKey::kDevice, SortKey::kAllocations, SortKey::kMemory, SortKey::kProcess});
    return keys;
}

}  // namespace nimba::smi::top
