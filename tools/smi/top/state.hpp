// SPDX-License-Identifier: MIT
// What the live view shows, and what keys change of it.
#pragma once

#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/top/history.hpp"
#include "tools/smi/top/keys.hpp"
#include "tools/smi/top/process_table.hpp"
#include "tools/smi/top/samples.hpp"
#include "tools/smi/top/settings.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace nimba::smi::top {

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
    [[nodiscard]] const std::optional<MachineSnapshot>& snapshot() const
    {
        return samples_.newest();
    }

    // How long ago the newest sample came, or the view was opened.
    [[nodiscard]] Clock::duration age(Clock::time_point now) const { return samples_.age(now); }

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
    [[nodiscard]] const History& times() const { return samples_.times(); }

    [[nodiscard]] const ProcessTable& table() const { return table_; }
    [[nodiscard]] const EventLog& events() const { return samples_.events(); }

    // The user types what the processes shall have in their name.
    [[nodiscard]] bool is_typing() const { return typing_; }

    // The view has room for so many rows of the table, or lines of a page. Returns the first to
    // show.
    std::size_t fit_table(std::size_t height);
    std::size_t fit_page(std::size_t lines, std::size_t height);

  private:
    // Which gauges are shown: those of all sets, of one set, or none.
    static constexpr std::size_t kChoices = 5;

    void type(Key key);
    void act(Action action);
    void show_page(Page page);
    void show_adapter(std::size_t index);
    void show_next_adapter(std::size_t step);
    void move(std::ptrdiff_t rows);
    void sort_beside(std::ptrdiff_t step);
    void arrange_table();

    Settings settings_;
    Samples samples_;
    History none_;  // of no adapter
    ProcessTable table_;
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

}  // namespace nimba::smi::top
