// SPDX-License-Identifier: MIT
#include "tools/smi/top/view.hpp"

#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/top/clock_text.hpp"
#include "tools/smi/top/description.hpp"
#include "tools/smi/top/layout.hpp"
#include "tools/smi/top/unicode.hpp"
#include "tools/smi/top/view_gauge.hpp"
#include "tools/smi/top/view_table.hpp"

#include <fmt/core.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi::top {
namespace {

using namespace std::chrono_literals;

// What an answer may take without anybody hearing of it.
constexpr auto kUsualDelay = 2s;

constexpr const char* kToolName = " nimba-smi top ";

// What is left of the texts of the pages: keys, and the time of an event.
constexpr int kHelpIndent = 15;
constexpr int kEventIndent = 10;

// For so long an event stands out, and is shown if it has no row of its own.
constexpr auto kShownFor = 10s;

bool is_late(const State& state, Clock::time_point now)
{
    return !state.is_paused() && state.age(now) > state.settings().interval + kUsualDelay;
}

std::string seconds_text(Clock::duration time)
{
    return fmt::format("{} s", std::chrono::duration_cast<std::chrono::seconds>(time).count());
}

// What is going on, at the right end of the first row.
std::pair<std::string, Ink> status(const State& state, Clock::time_point now)
{
    const std::string interval =
        fmt::format("every {} s", static_cast<double>(state.settings().interval.count()) / 1000);
    if (!state.snapshot()) {
        return {"asking the adapters, " + seconds_text(state.age(now)), Ink::kDim};
    }
    const std::string time = clock_text(state.snapshot()->time);
    if (state.is_paused()) {
        return {"paused at " + time, Ink::kWarning};
    }
    if (is_late(state, now)) {
        return {fmt::format("{}, no answer for {}", time, seconds_text(state.age(now))),
                Ink::kWarning};
    }
    return {fmt::format("{}, {}", time, interval), Ink::kDim};
}

std::string tab_text(std::size_t index, const AdapterState& adapter, bool brief)
{
    const std::string mark = is_silent(adapter) ? "!" : "";
    return brief ? fmt::format(" {}{} ", index + 1, mark)
                 : fmt::format(" {} {}{} ", index + 1,
                               printable(adapter.adapter.name.value_or(adapter.adapter.bus_id)),
                               mark);
}

int tabs_width(const MachineSnapshot& snapshot, bool brief)
{
    int width = 0;
    for (std::size_t i = 0; i < snapshot.adapters.size(); ++i) {
        width += width_of(tab_text(i, snapshot.adapters[i], brief)) + 1;
    }
    return width;
}

void draw_title(Canvas& canvas, const State& state, Clock::time_point now)
{
    const auto [text, ink] = status(state, now);
    const int right = canvas.size().width - width_of(text) - 1;
    canvas.put(right, 0, text, ink);
    int x = 0;
    const int tabs = state.snapshot() ? tabs_width(*state.snapshot(), false) : 0;
    if (width_of(kToolName) + 1 + tabs < right) {
        x += canvas.put(0, 0, kToolName, Ink::kTitle) + 1;
    }
    if (!state.snapshot()) {
        return;
    }
    const auto& adapters = state.snapshot()->adapters;
    const bool brief = tabs >= right;
    for (std::size_t i = 0; i < adapters.size(); ++i) {
        const Ink tab = &adapters[i] == state.adapter() ? Ink::kTabHere
                        : is_silent(adapters[i])        ? Ink::kBad
                                                        : Ink::kTab;
        x += canvas.put(x, 0, tab_text(i, adapters[i], brief), tab, right - x - 1) + 1;
    }
}

void draw_description(Canvas& canvas, const State& state, int y)
{
    const AdapterState* const adapter = state.adapter();
    if (adapter == nullptr) {
        return;
    }
    const int room = canvas.size().width - 2;
    if (is_silent(*adapter)) {
        const std::string text =
            adapter->adapter.bus_id +
            ": the driver is gone or does not answer; nimba-smi doctor says why";
        canvas.put(1, y, cut(text, room), Ink::kBad);
    } else {
        canvas.put(1, y, cut(description(*adapter, room), room), Ink::kDim);
    }
}

std::string event_text(const Event& event)
{
    return fmt::format("{}  {}{}", clock_text(event.time), event.text,
                       event.times > 1 ? fmt::format(" ({} times)", event.times) : "");
}

Ink event_ink(const Event& event)
{
    return event.good ? Ink::kScale0 : Ink::kWarning;
}

bool has_fresh_event(const State& state)
{
    const auto& events = state.events().events();
    return !events.empty() && state.snapshot() &&
           state.snapshot()->time - events.back().time < kShownFor;
}

void draw_event(Canvas& canvas, const State& state, int y)
{
    const auto& events = state.events().events();
    if (!events.empty()) {
        const int room = canvas.size().width - 2;
        canvas.put(1, y, cut(event_text(events.back()), room),
                   has_fresh_event(state) ? event_ink(events.back()) : Ink::kDim);
    }
}

// The keys that fit, each with what it does in a word.
void draw_keys(Canvas& canvas, int y)
{
    int x = 1;
    for (const Binding& binding : bindings()) {
        if (binding.brief == nullptr) {
            continue;
        }
        const std::string key = key_name(binding.keys.front());
        if (x + width_of(key) + 1 + width_of(binding.brief) > canvas.size().width) {
            return;
        }
        x += canvas.put(x, y, key, Ink::kKey) + 1;
        x += canvas.put(x, y, binding.brief, Ink::kDim) + 2;
    }
}

void draw_typing(Canvas& canvas, const State& state, int y)
{
    int x = 1 + canvas.put(1, y, "Filter: ", Ink::kKey);
    x += canvas.put(x, y, state.table().filter(), Ink::kPlain);
    x += canvas.put(x, y, " ", Ink::kSelected);
    canvas.put(x, y, "  Enter keeps it, Esc shows all", Ink::kDim);
}

void draw_figures(Canvas& canvas, State& state, const Layout& places, Clock::time_point now)
{
    if (places.description) {
        draw_description(canvas, state, *places.description);
    }
    for (const auto& [gauge, area] : places.gauges) {
        draw_gauge(canvas, area, state, gauge, is_late(state, now));
    }
    draw_table(canvas, places.table, places.framed_table, state);
    if (places.event) {
        draw_event(canvas, state, *places.event);
    }
}

// A text of a page, and the columns of what it begins with: below them is room.
struct Paragraph {
    std::string text;
    Ink ink;
    int indent;
};

using Line = std::pair<std::string, Ink>;

std::vector<Line> lines_of(const std::vector<Paragraph>& paragraphs, int width)
{
    std::vector<Line> lines;
    for (const auto& [text, ink, indent] : paragraphs) {
        for (std::string& line : in_lines(text, width, indent)) {
            lines.emplace_back(std::move(line), ink);
        }
    }
    return lines;
}

// A page of text instead of the figures.
void draw_page(Canvas& canvas, State& state, const char* title,
               const std::vector<Paragraph>& paragraphs)
{
    const Area area{0, 1, canvas.size().width, canvas.size().height - 2};
    const std::vector<Line> lines = lines_of(paragraphs, area.width - 4);
    draw_frame(canvas, area);
    canvas.put(2, 1, title, Ink::kTitle, area.width - 4);
    const auto height = static_cast<std::size_t>(area.height - 2);
    const std::size_t first = state.fit_page(lines.size(), height);
    for (std::size_t row = 0; row < height && first + row < lines.size(); ++row) {
        const auto& [text, ink] = lines[first + row];
        const int y = area.y + 1 + static_cast<int>(row);
        canvas.put(2, y, text, ink);
    }
    if (first + height < lines.size()) {
        canvas.put(2, area.y + area.height - 1, " Down: more ", Ink::kDim, area.width - 4);
    }
}

void draw_help(Canvas& canvas, State& state)
{
    std::vector<Paragraph> paragraphs;
    for (std::string& line : help_lines()) {
        paragraphs.push_back({std::move(line), Ink::kPlain, kHelpIndent});
    }
    draw_page(canvas, state, " Keys ", paragraphs);
}

// The newest first.
void draw_events(Canvas& canvas, State& state)
{
    std::vector<Paragraph> paragraphs;
    const auto& events = state.events().events();
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        paragraphs.push_back({event_text(*event), event_ink(*event), kEventIndent});
    }
    if (paragraphs.empty()) {
        paragraphs.push_back({"Nothing happened yet.", Ink::kDim, 0});
    }
    draw_page(canvas, state, " Events ", paragraphs);
}

}  // namespace

Canvas draw(State& state, Size size, Clock::time_point now)
{
    Canvas canvas{size};
    if (is_too_small(size)) {
        canvas.put(0, 0, fmt::format("needs {}x{}, q quits", kSmallest.width, kSmallest.height),
                   Ink::kPlain);
        return canvas;
    }
    const Layout places = layout(size, state.wanted_gauges());
    draw_title(canvas, state, now);
    switch (state.page()) {
        case Page::kFigures:
            draw_figures(canvas, state, places, now);
            break;
        case Page::kHelp:
            draw_help(canvas, state);
            break;
        case Page::kEvents:
            draw_events(canvas, state);
            break;
    }
    if (state.is_typing()) {
        draw_typing(canvas, state, places.keys);
    } else if (!places.event && state.page() == Page::kFigures && has_fresh_event(state)) {
        draw_event(canvas, state, places.keys);
    } else {
        draw_keys(canvas, places.keys);
    }
    if (state.settings().ascii || state.settings().marks == Marks::kAscii) {
        canvas.make_ascii();
    }
    return canvas;
}

}  // namespace nimba::smi::top
