// SPDX-License-Identifier: MIT
// All that the live view knows and that keys change.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/top/events.hpp"
#include "tools/smi/top/gauges.hpp"
#include "tools/smi/top/history.hpp"
#include "tools/smi/top/keys.hpp"
#include "tools/smi/top/plot.hpp"
#include "tools/smi/top/process_table.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace nimba::smi::top {

using Clock = std::chrono::steady_clock;

struct Settings {
    std::chrono::milliseconds interval{1000};
    Marks marks = Marks::kBraille;
    bool ascii = false;  // the terminal shows nothing else
};

enum class Page : uint8_t { kFigures, kHelp, kEvents };

class State final {
  public:
    State(const Settings& settings, Clock::time_point now);

    // A new sample.
    void take(MachineSnapshot snapshot, Clock::time_point now);

    void press(Key key);

    // The user wants to end.
    [[nodiscard]] bool is_over() const { return over_; }

    // The user wants the whole screen to be drawn anew; says so once.
    bool take_redraw();

    [[nodiscard]] const Settings& settings() const { return settings_; }
    [[nodiscard]] bool is_paused() const { return paused_; }
    [[nodiscard]] Page page() const { return page_; }

    // None before the first sample.
    [[nodiscard]] const std::optional<MachineSnapshot>& snapshot() const { return snapshot_; }

    // How long ago the newest sample came, or the view was opened.
    [[nodiscard]] Clock::duration age(Clock::time_point now) const { return now - last_; }

    // The adapter that is shown; null without any.
    [[nodiscard]] const AdapterState* adapter() const;
    [[nodiscard]] bool shows_all_processes() const { return all_processes_; }

    // When the processes of that adapter were last read, when that is not now; a sample without
    // them leaves what was known.
    [[nodiscard]] std::optional<std::chrono::system_clock::time_point> processes_time() const;

    // The gauges that the user wants to see, and their values.
    [[nodiscard]] std::vector<std::size_t> wanted_gauges() const;
    [[nodiscard]] const History& history(std::size_t gauge) const;

    // The seconds at which the samples came.
    [[nodiscard]] const History& times() const { return times_; }

    [[nodiscard]] const ProcessTable& table() const { return table_; }
    [[nodiscard]] const EventLog& events() const { return events_; }

    // The user types what the processes shall have in their name.
    [[nodiscard]] bool is_typing() const { return typing_; }

    // The view has room for so many rows of the table, or lines of a page. Returns the first to
    // show.
    std::size_t fit_table(std::size_t height);
    std::size_t fit_page(std::size_t lines, std::size_t height);

  private:
    // Which gauges are shown: those of all sets, of one set, or none.
    static constexpr std::size_t kChoices = 5;

    // The processes of an adapter at a time.
    struct KnownProcesses {
        UsageTable table;
        std::chrono::system_clock::time_point time;
    };

    void keep_processes(MachineSnapshot& snapshot);
    void type(Key key);
    void act(Action action);
    void show_page(Page page);
    void show_adapter(std::size_t index);
    void show_next_adapter(std::size_t step);
    void move(std::ptrdiff_t rows);
    void sort_beside(std::ptrdiff_t step);
    void change_interval(std::ptrdiff_t step);
    void show_next_marks();
    void arrange_table();

    Settings settings_;
    Clock::time_point opened_;
    Clock::time_point last_;
    std::optional<MachineSnapshot> snapshot_;
    std::map<int, std::vector<History>> histories_;  // by slot, one for each gauge
    std::map<int, KnownProcesses> processes_;        // by slot
    History times_;
    History none_;
    ProcessTable table_;
    EventLog events_;
    std::size_t adapter_ = 0;  // its place in the snapshot
    std::size_t choice_ = 0;
    std::size_t page_rows_ = 1;  // of the table or the page that is shown
    std::ptrdiff_t scroll_ = 0;  // of the page
    Page page_ = Page::kFigures;
    bool all_processes_ = false;
    bool paused_ = false;
    bool resumed_ = false;  // and no sample came since
    bool typing_ = false;
    bool over_ = false;
    bool redraw_ = false;
};

// The columns that a table of one adapter, or of all, can be sorted by, from the left.
std::vector<SortKey> sort_keys(bool all_adapters);

}  // namespace nimba::smi::top
