// SPDX-License-Identifier: MIT
#include "tools/smi/top/gauges.hpp"

#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

#include <cmath>

namespace nimba::smi::top {
namespace {

using Value = std::optional<double>;

template <typename Number>
Value value_of(const std::optional<Number>& number)
{
    return number && std::isfinite(static_cast<double>(*number))
               ? Value(static_cast<double>(*number))
               : std::nullopt;
}

template <std::optional<int64_t> CounterReading::*member>
Value engine(const AdapterState& adapter)
{
    return value_of(adapter.counters.*member);
}

template <std::optional<int64_t> ClockReading::*member>
Value clock(const AdapterState& adapter)
{
    return value_of(adapter.clocks.*member);
}

Value heat(const AdapterState& adapter)
{
    return value_of(temperature(adapter));
}

Value frame_rate(const AdapterState& adapter)
{
    return value_of(adapter.rates.both ? adapter.rates.both : adapter.rates.flips);
}

Value used_memory(const AdapterState& adapter)
{
    return value_of(memory_use(adapter).used);
}

Value all_memory(const AdapterState& adapter)
{
    return value_of(memory_use(adapter).total);
}

std::string percent_text(double value)
{
    return fmt::format("{:.0f} %", value);
}

std::string heat_text(double value)
{
    return fmt::format("{:.0f} °C", value);
}

std::string number_text(double value)
{
    return fmt::format("{:.0f}", value);
}

std::string rate_text(double value)
{
    constexpr double kWithoutFraction = 100;
    return value >= kWithoutFraction || value == std::floor(value) ? fmt::format("{:.0f}/s", value)
                                                                   : fmt::format("{:.1f}/s", value);
}

std::string memory_text(double value)
{
    return size_text(static_cast<uint64_t>(value));
}

constexpr auto kEngine3d = &engine<&CounterReading::engine_3d>;
constexpr auto kEngineVcp = &engine<&CounterReading::engine_vcp>;
constexpr auto kEngineVpp = &engine<&CounterReading::engine_vpp>;
constexpr auto kCoreClock = &clock<&ClockReading::core>;
constexpr auto kMemoryClock = &clock<&ClockReading::memory>;

constexpr std::array<Gauge, kGaugeCount> kTable{{
    {"3D engine",
     "3D",
     GaugeSet::kEngines,
     ScaleKind::kHundred,
     {},
     0,
     kEngine3d,
     nullptr,
     percent_text},
    {"VCP engine",
     "VCP",
     GaugeSet::kEngines,
     ScaleKind::kHundred,
     {},
     4,
     kEngineVcp,
     nullptr,
     percent_text},
    {"VPP engine",
     "VPP",
     GaugeSet::kEngines,
     ScaleKind::kHundred,
     {},
     5,
     kEngineVpp,
     nullptr,
     percent_text},
    {"Frames", "Frames", GaugeSet::kLoad, ScaleKind::kOpen, Ink::kFrames, 3, frame_rate, nullptr,
     rate_text},
    {"Memory", "Memory", GaugeSet::kLoad, ScaleKind::kTotal, Ink::kMemory, 1, used_memory,
     all_memory, memory_text},
    {"Temperature", "Temp", GaugeSet::kLoad, ScaleKind::kHundred, {}, 2, heat, nullptr, heat_text},
    {"Core clock", "Core", GaugeSet::kClocks, ScaleKind::kOpen, Ink::kClock, 6, kCoreClock, nullptr,
     number_text},
    {"Memory clock", "Mem clk", GaugeSet::kClocks, ScaleKind::kOpen, Ink::kClock, 7, kMemoryClock,
     nullptr, number_text},
}};

}  // namespace

std::span<const Gauge, kGaugeCount> gauges()
{
    return kTable;
}

}  // namespace nimba::smi::top
