// SPDX-License-Identifier: MIT
#include "tools/smi/usage/figures.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

namespace nimba::smi {
namespace {

constexpr std::array kFigures{
    FigureColumn{"flips_per_second", "FLIPS/S"},    FigureColumn{"blits_per_second", "BLITS/S"},
    FigureColumn{"frames_per_second", "FRAMES/S"},  FigureColumn{"average_per_second", "AVERAGE"},
    FigureColumn{"engine_3d_percent", "3D", "%"},   FigureColumn{"engine_vcp_percent", "VCP", "%"},
    FigureColumn{"engine_vpp_percent", "VPP", "%"},
};
constexpr FigureColumn kBandwidth{"bandwidth_words", "BANDWIDTH WORDS"};
constexpr FigureColumn kBusy{"busy_words", "BUSY WORDS"};

constexpr std::size_t kBandwidthWords = std::tuple_size_v<BandwidthWords>;
constexpr std::size_t kBusyWords = std::tuple_size_v<BusyWords>;

constexpr auto kColumns = [] {
    std::array<FigureColumn, kFigures.size() + kBandwidthWords + kBusyWords> columns{};
    auto next = std::ranges::copy(kFigures, columns.begin()).out;
    next = std::fill_n(next, kBandwidthWords, kBandwidth);
    std::fill_n(next, kBusyWords, kBusy);
    return columns;
}();

void append_words(std::span<const Word> words, Figures& figures)
{
    std::ranges::transform(words, std::back_inserter(figures), [](const Word& word) {
        return word ? Figure{static_cast<int64_t>(*word)} : std::nullopt;
    });
}

}  // namespace

MonitorView<Figures> usage_view()
{
    return figure_view("nimba-smi.usage.1", kColumns);
}

FrameRates frame_rates(const CounterReading& reading, const FrameRates& counted)
{
    const bool counts = reading.frames.flips && reading.frames.time;
    return counts ? counted : reading.rates;
}

Figures usage_figures(const CounterReading& reading, const FrameRates& counted)
{
    const FrameRates rates = frame_rates(reading, counted);
    Figures figures{figure(rates.flips),       figure(rates.blits),
                    figure(rates.both),        figure(rates.average),
                    figure(reading.engine_3d), figure(reading.engine_vcp),
                    figure(reading.engine_vpp)};
    append_words(reading.bandwidth, figures);
    append_words(reading.busy, figures);
    return figures;
}

}  // namespace nimba::smi
