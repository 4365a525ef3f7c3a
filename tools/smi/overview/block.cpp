// SPDX-License-Identifier: MIT
#include "tools/smi/overview/block.hpp"

#include "tools/smi/clocks/figures.hpp"
#include "tools/smi/list/render.hpp"
#include "tools/smi/overview/line.hpp"
#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/snapshot/load.hpp"
#include "tools/smi/summary/fields.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace nimba::smi {
namespace {

constexpr const char* kUnknown = "n/a";
constexpr std::size_t kSideBySide = 80;  // columns from which on bars stand beside the facts
constexpr std::size_t kFactWidth = 13;   // of the names of the facts
constexpr std::size_t kBarName = 8;      // of the names of the bars
constexpr std::size_t kPercent = 6;      // behind a bar

Colour colour_of(Load load)
{
    switch (load) {
        case Load::kCritical:
            return Colour::kRed;
        case Load::kHigh:
            return Colour::kYellow;
        case Load::kUsual:
            break;
    }
    return Colour::kGreen;
}

template <typename Number>
std::string number_text(const std::optional<Number>& number)
{
    return number ? std::to_string(*number) : kUnknown;
}

struct Fact {
    const char* name;
    std::string text;
    Colour colour = Colour::kNone;
    std::string behind{};  // the text, without its colour
};

// A part of a whole as a bar, or a text in its place; one without a name goes with the one above.
struct Gauge {
    const char* name;
    std::optional<uint64_t> part{};
    uint64_t whole = 0;
    std::string text = kUnknown;
    Colour colour = Colour::kNone;
};

// Facts and gauges side by side.
constexpr std::size_t kRows = 5;
using Facts = std::array<Fact, kRows>;
using Gauges = std::array<Gauge, kRows>;

std::string driver_text(const AdapterState& state)
{
    const auto& version = state.summary.driver_version;
    const auto& described = state.summary.adapter;
    const std::string text = version ? driver_version_text(*version) : kUnknown;
    return described && described->driver != DriverKind::kUnknown
               ? fmt::format("{} ({})", text, driver_word(described->driver))
               : text;
}

std::string firmware_text(const SummaryReading& summary)
{
    const std::string version =
        summary.firmware_version ? firmware_version_text(*summary.firmware_version) : kUnknown;
    return summary.firmware_name ? fmt::format("{}, {}", version, *summary.firmware_name) : version;
}

std::string link_text(const SummaryReading& summary)
{
    if (!summary.link_generation && !summary.link_width) {
        return kUnknown;
    }
    return fmt::format("gen {}, {} lanes", number_text(summary.link_generation),
                       number_text(summary.link_width));
}

// The fans that the sensors tell; the speed that the driver tells when they tell none.
std::string fans_text(const SensorReading& sensors)
{
    std::vector<std::string> fans;
    for (const auto& fan : {sensors.fan0, sensors.fan1}) {
        if (fan) {
            fans.push_back(std::to_string(*fan));
        }
    }
    if (fans.empty() && sensors.fan_speed) {
        fans.push_back(std::to_string(*sensors.fan_speed));
    }
    return fmt::format(", fan{} {}", fans.size() > 1 ? "s" : "",
                       fans.empty() ? kUnknown : fmt::format("{}", fmt::join(fans, " ")));
}

Fact temperature_fact(const AdapterState& state)
{
    const auto celsius = temperature(state);
    return {"Temperature", celsius ? fmt::format("{} C", *celsius) : kUnknown,
            celsius ? colour_of(load_of_temperature(*celsius)) : Colour::kNone,
            fans_text(state.sensors)};
}

Facts facts_of(const AdapterState& state)
{
    return {{{"Driver", driver_text(state)},
             {"Firmware", firmware_text(state.summary)},
             {"PCIe link", link_text(state.summary)},
             temperature_fact(state),
             {"Power level", level_name(state.clocks).value_or(kUnknown)}}};
}

Gauge gauge(const char* name, const std::optional<uint64_t>& part, uint64_t whole)
{
    if (!part || whole == 0) {
        return {name};
    }
    const auto percent = static_cast<int64_t>(std::min(*part, whole) * 100 / whole);
    return {name, std::min(*part, whole), whole, fmt::format("{}%", percent),
            colour_of(load_of_percent(percent))};
}

Gauge engine_gauge(const char* name, const std::optional<int64_t>& percent)
{
    const auto part =
        percent ? std::optional<uint64_t>(std::max<int64_t>(*percent, 0)) : std::nullopt;
    return gauge(name, part, 100);
}

std::string memory_text(const MemoryUse& memory)
{
    const auto size = [](const std::optional<uint64_t>& bytes) {
        return bytes ? size_text(*bytes) : kUnknown;
    };
    return memory.used || memory.total
               ? fmt::format("{} of {}", size(memory.used), size(memory.total))
               : std::string{};
}

Gauges gauges_of(const AdapterState& state)
{
    const MemoryUse memory = memory_use(state);
    const CounterReading& counters = state.counters;
    return {{gauge("Memory", memory.used, memory.total.value_or(0)),
             {"", std::nullopt, 0, memory_text(memory)},
             engine_gauge("3D", counters.engine_3d),
             engine_gauge("Video", counters.engine_vcp),
             engine_gauge("VPP", counters.engine_vpp)}};
}

Fact clocks_fact(const ClockReading& clocks)
{
    return {"Clocks", fmt::format("engine {}, video {}, memory {}, core {}, gfx {}",
                                  number_text(clocks.engine), number_text(clocks.video),
                                  number_text(clocks.memory), number_text(clocks.core),
                                  number_text(clocks.gfx))};
}

// What is known of flips and blits; nothing before the second snapshot.
std::string frames_text(const FrameRates& rates)
{
    std::vector<std::string> texts;
    if (rates.flips) {
        texts.push_back(fmt::format("{:.1f} flips/s", *rates.flips));
    }
    if (rates.blits) {
        texts.push_back(fmt::format("{:.1f} blits/s", *rates.blits));
    }
    return fmt::format("{}", fmt::join(texts, ", "));
}

void add_fact(Line& line, const Fact& fact)
{
    line.fill_to(1).add(fact.name).fill_to(1 + kFactWidth).add(fact.text, fact.colour);
    line.add(fact.behind);
}

// From the line's end to its limit.
void add_gauge(Line& line, const Gauge& gauge, std::size_t limit)
{
    const std::size_t begin = line.columns();
    line.add(gauge.name).fill_to(begin + kBarName);
    if (gauge.part) {
        line.bar(*gauge.part, gauge.whole, limit - kPercent - line.columns(), gauge.colour);
        line.fill_to(limit - gauge.text.size());
    }
    line.add(gauge.text, gauge.colour);
}

std::string side_by_side(const Facts& facts, const Gauges& gauges, const OverviewStyle& style)
{
    const std::size_t width = style.columns - 1;
    const std::size_t right = style.columns / 2 - 1;
    std::string text;
    for (std::size_t i = 0; i < kRows; ++i) {
        Line line{style, right - 2};
        add_fact(line, facts.at(i));
        line.limit(width).fill_to(right);
        add_gauge(line, gauges.at(i), width);
        text += line.text();
    }
    return text;
}

std::string one_below_the_other(const Facts& facts, const Gauges& gauges,
                                const OverviewStyle& style)
{
    const std::size_t width = style.columns - 1;
    std::string text;
    for (const Fact& fact : facts) {
        Line line{style, width};
        add_fact(line, fact);
        text += line.text();
    }
    for (const Gauge& gauge : gauges) {
        Line line{style, width};
        add_gauge(line.fill_to(1), gauge, width);
        text += line.text();
    }
    return text;
}

// The name at the left, and where the adapter is at the right.
std::string heading(const AdapterState& state, const OverviewStyle& style)
{
    const auto& described = state.summary.adapter;
    const std::string card =
        described && described->card ? fmt::format(", card {}", *described->card) : "";
    const std::string place = state.adapter.bus_id + card;
    const std::size_t width = style.columns - 1;
    Line line{style, width - place.size() - 3};
    line.rule_to(2).add(
        fmt::format(" {}  {}", state.adapter.slot, state.adapter.name.value_or(kUnknown)));
    return line.limit(width).rule_to(width - place.size() - 1).add(" " + place).text();
}

std::string fact_line(const Fact& fact, const OverviewStyle& style)
{
    Line line{style, style.columns - 1};
    add_fact(line, fact);
    return line.text();
}

}  // namespace

std::string adapter_block(const AdapterState& adapter, const OverviewStyle& style)
{
    if (!adapter.there) {
        return heading(adapter, style) +
               fact_line({"n/a", "It gave no answer: standard error says why"}, style);
    }
    const Facts facts = facts_of(adapter);
    const Gauges gauges = gauges_of(adapter);
    const std::string frames = frames_text(adapter.rates);
    return heading(adapter, style) +
           (style.columns >= kSideBySide ? side_by_side(facts, gauges, style)
                                         : one_below_the_other(facts, gauges, style)) +
           fact_line(clocks_fact(adapter.clocks), style) +
           (frames.empty() ? "" : fact_line({"Frames", frames}, style));
}

}  // namespace nimba::smi
