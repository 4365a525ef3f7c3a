// SPDX-License-Identifier: MIT
#include "tools/smi/export/adapter_samples.hpp"

#include "tools/smi/dvfs/field.hpp"
#include "tools/smi/dvfs/level.hpp"
#include "tools/smi/export/leak_groups.hpp"
#include "tools/smi/list/render.hpp"
#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/summary/fields.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace nimba::smi::exporting {
namespace {

constexpr double kPercent = 100;

std::string text_or_empty(const auto& value)
{
    return value ? fmt::format("{}", *value) : std::string{};
}

std::string id_text(const std::optional<uint32_t>& id)
{
    return id ? fmt::format("{:#06x}", *id) : std::string{};
}

void add_identity(const AdapterFigures& figures, const Labels& labels, Samples& samples)
{
    const SummaryReading& summary = figures.state.summary;
    Labels identity{{"name", text_or_empty(figures.state.adapter.name)}};
    if (const auto& adapter = summary.adapter) {
        identity.insert(identity.end(),
                        {{"card", text_or_empty(adapter->card)},
                         {"vendor_id", id_text(adapter->vendor_id)},
                         {"device_id", id_text(adapter->device_id)},
                         {"driver_kind", std::string{driver_word(adapter->driver)}}});
    }
    const auto version = [](const auto& packed, auto* text) {
        return packed ? text(*packed) : std::string{};
    };
    identity.insert(identity.end(),
                    {{"driver_version", version(summary.driver_version, driver_version_text)},
                     {"firmware_version", version(summary.firmware_version, firmware_version_text)},
                     {"firmware_name", text_or_empty(summary.firmware_name)},
                     {"pcie_generation", text_or_empty(summary.link_generation)},
                     {"pcie_lanes", text_or_empty(summary.link_width)}});
    samples.add(Metric::kAdapterUp, labels, is_up(figures) ? 1 : 0);
    samples.add(Metric::kAdapterInfo, joined(labels, std::move(identity)), 1);
}

void add_summary(const AdapterState& state, const Labels& labels, Samples& samples)
{
    for (const SummaryField& field : summary_fields(state)) {
        const auto* const number = field.value ? std::get_if<int64_t>(&*field.value) : nullptr;
        if (field.unit == "driver's" && !field.is_clock && number != nullptr) {
            samples.add(Metric::kSummary, joined(labels, {{"field", field.key}}),
                        static_cast<double>(*number));
        }
    }
}

void add_clocks(const ClockReading& clocks, const Labels& labels, Samples& samples)
{
    struct Clock {
        const char* name;
        std::optional<int64_t> ClockReading::*member;
    };
    constexpr std::array kClocks{
        Clock{"engine", &ClockReading::engine}, Clock{"video", &ClockReading::video},
        Clock{"memory", &ClockReading::memory}, Clock{"core", &ClockReading::core},
        Clock{"gfx", &ClockReading::gfx},
    };
    for (const auto& [name, member] : kClocks) {
        samples.add(Metric::kClock, joined(labels, {{"clock", name}}), clocks.*member);
    }
    samples.add(Metric::kVoltage, joined(labels, {{"rail", "gfx"}}), clocks.gfx_voltage);
    for (std::size_t i = 0; clocks.level && i < kLevelNames.size(); ++i) {
        const bool is_level = *clocks.level == static_cast<int64_t>(i);
        samples.add(Metric::kDvfsLevel, joined(labels, {{"level", std::string{kLevelNames.at(i)}}}),
                    is_level ? 1 : 0);
    }
}

void add_settings(const DvfsReading& settings, const Labels& labels, Samples& samples)
{
    // These are clocks, voltage and level.
    constexpr std::array<std::string_view, 5> kElsewhere{"dvfs_level", "gfx_clock", "gfx_voltage",
                                                         "video_clock", "memory_clock"};
    for (const DvfsField& field : dvfs_fields()) {
        if (std::ranges::find(kElsewhere, field.name) == kElsewhere.end()) {
            samples.add(Metric::kDvfsSetting,
                        joined(labels, {{"setting", std::string{field.name}}}),
                        value_of(settings, field));
        }
    }
}

void add_sensors(const AdapterState& state, const Labels& labels, Samples& samples)
{
    samples.add(Metric::kTemperature, labels, temperature(state));
    const SensorReading& sensors = state.sensors;
    samples.add(Metric::kFan, joined(labels, {{"fan", "fan0"}}), sensors.fan0);
    samples.add(Metric::kFan, joined(labels, {{"fan", "fan1"}}), sensors.fan1);
    samples.add(Metric::kFan, joined(labels, {{"fan", "fan_speed"}}), sensors.fan_speed);
}

void add_segments(const AdapterState& state, const Labels& labels, Samples& samples)
{
    const MemoryUse all = memory_use(state);
    samples.add(Metric::kMemoryUsed, labels, all.used);
    samples.add(Metric::kMemoryTotal, labels, all.total);
    for (const Segment& segment : state.segments.segments) {
        const Labels named =
            joined(labels, {{"segment", segment.label}, {"heap", text_or_empty(segment.name)}});
        const SegmentSource source = state.segments.source;
        samples.add(Metric::kSegmentUsed, named, in_bytes(segment.use.used, source));
        samples.add(Metric::kSegmentTotal, named, in_bytes(segment.use.total, source));
    }
}

void add_allocations(const AdapterFigures& figures, const Labels& labels, Samples& samples)
{
    samples.add(Metric::kDeviceContexts, labels, figures.contexts);
    const auto& counts = figures.allocations;
    for (std::size_t i = 0; counts && i < kSegmentNames.size(); ++i) {
        const Labels named = joined(labels, {{"segment", kSegmentNames.at(i)}});
        samples.add(Metric::kAllocations, named, static_cast<double>(counts->at(i)));
        samples.add(Metric::kAllocationBytes, named,
                    static_cast<double>(figures.state.processes.total.segments.at(i)));
    }
}

void add_leaks(const AdapterFigures& figures, const Labels& labels, Samples& samples)
{
    if (!figures.leaks) {
        return;
    }
    for (const LeakGroupSize& group : largest_leak_groups(*figures.leaks)) {
        const Shape& shape = group.shape;
        const Labels named = joined(labels, {{"width", std::to_string(shape.width)},
                                             {"height", std::to_string(shape.height)},
                                             {"size", std::to_string(shape.size)},
                                             {"format", std::to_string(shape.hw_format)},
                                             {"type", std::to_string(shape.at_type)}});
        samples.add(Metric::kLeakAllocations, named, static_cast<double>(group.allocations));
        samples.add(Metric::kLeakBytes, named, static_cast<double>(group.bytes()));
        samples.add(Metric::kLeakOldest, named, static_cast<double>(group.oldest_hits));
    }
}

void add_words(Metric metric, std::span<const Word> words, const Labels& labels, Samples& samples)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        samples.add(metric, joined(labels, {{"word", std::to_string(i)}}), words[i]);
    }
}

void add_counters(const AdapterState& state, const Labels& labels, Samples& samples)
{
    const CounterReading& counters = state.counters;
    const auto kind = [&](const char* name) { return joined(labels, {{"kind", name}}); };
    samples.add(Metric::kFrames, kind("flip"), counters.frames.flips);
    samples.add(Metric::kFrames, kind("blit"), counters.frames.blits);
    samples.add(Metric::kFrameRate, kind("flip"), state.rates.flips);
    samples.add(Metric::kFrameRate, kind("blit"), state.rates.blits);
    samples.add(Metric::kFrameRate, kind("all"), state.rates.both);
    samples.add(Metric::kAverageFrameRate, labels, state.rates.average);
    const auto engine = [&](const char* name, const std::optional<int64_t>& percent) {
        if (percent) {
            samples.add(Metric::kEngineBusy, joined(labels, {{"engine", name}}),
                        static_cast<double>(*percent) / kPercent);
        }
    };
    engine("3d", counters.engine_3d);
    engine("vcp", counters.engine_vcp);
    engine("vpp", counters.engine_vpp);
    add_words(Metric::kBandwidthWord, counters.bandwidth, labels, samples);
    add_words(Metric::kBusyWord, counters.busy, labels, samples);
}

}  // namespace

Labels adapter_labels(const SlotIdentity& adapter)
{
    return {{"gpu", adapter.bus_id}, {"slot", std::to_string(adapter.slot)}};
}

bool is_up(const AdapterFigures& adapter)
{
    // The library keeps the other fields of a summary when the driver has gone.
    const SummaryReading& summary = adapter.state.summary;
    const bool told = summary.temperature || summary.memory_usage || summary.vbios_version_number ||
                      adapter.leaks || adapter.page_tables;
    const auto has_value = [](const auto& value) { return value.has_value(); };
    return told || !is_silent(adapter.state) ||
           (adapter.settings && std::ranges::any_of(adapter.settings->values, has_value));
}

void add_adapter(const AdapterFigures& adapter, const Labels& labels, Samples& samples)
{
    add_identity(adapter, labels, samples);
    add_summary(adapter.state, labels, samples);
    add_clocks(adapter.state.clocks, labels, samples);
    if (adapter.settings) {
        add_settings(*adapter.settings, labels, samples);
    }
    add_sensors(adapter.state, labels, samples);
    add_segments(adapter.state, labels, samples);
    add_allocations(adapter, labels, samples);
    add_leaks(adapter, labels, samples);
    add_counters(adapter.state, labels, samples);
}

}  // namespace nimba::smi::exporting
