// SPDX-License-Identifier: MIT
#include "tools/smi/top/state.hpp"

#include "tools/smi/top/gauges.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace nimba::smi::top {
namespace {

constexpr std::ptrdiff_t kFar = std::numeric_limits<std::ptrdiff_t>::max() / 2;

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
    : settings_{settings}, samples_{now}, none_{1}
{
}

void State::take(MachineSnapshot snapshot, Clock::time_point now)
{
    // What was not seen while the view was paused leaves a gap.
    if (std::exchange(resumed_, false)) {
        samples_.leave_gap();
    }
    samples_.take(std::move(snapshot), now);
    arrange_table();
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
            show_next_adapter(snapshot() ? snapshot()->adapters.size() - 1 : 0);
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
            lengthen_interval(settings_);
            break;
        case Action::kFaster:
            shorten_interval(settings_);
            break;
        case Action::kPlots:
            choice_ = (choice_ + 1) % kChoices;
            break;
        case Action::kMarks:
            take_next_marks(settings_);
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
    return snapshot() && adapter_ < snapshot()->adapters.size() ? &snapshot()->adapters[adapter_]
                                                                : nullptr;
}

std::optional<std::chrono::system_clock::time_point> State::processes_time() const
{
    const AdapterState* const shown = adapter();
    return shown == nullptr ? std::nullopt : samples_.processes_time(*shown);
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
    return shown == nullptr ? none_ : samples_.history(*shown, gauge);
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
    if (snapshot() && index < snapshot()->adapters.size()) {
        adapter_ = index;
        arrange_table();
    }
}

void State::show_next_adapter(std::size_t step)
{
    if (snapshot() && !snapshot()->adapters.empty()) {
        show_adapter((adapter_ + step) % snapshot()->adapters.size());
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

void State::arrange_table()
{
    const AdapterState* const shown = adapter();
    if (all_processes_ && snapshot()) {
        table_.show(process_rows(snapshot()->adapters));
    } else if (shown != nullptr) {
        table_.show(process_rows({shown, 1}));
    }
}

}  // namespace nimba::smi::top
