// SPDX-License-Identifier: MIT
#include "tools/smi/clocks/figures.hpp"

#include "tools/smi/dvfs/level.hpp"

#include <array>
#include <string>

namespace nimba::smi {
namespace {

constexpr std::array kColumns{
    FigureColumn{"engine_clock", "ENGINE"}, FigureColumn{"video_clock", "VIDEO"},
    FigureColumn{"memory_clock", "MEMORY"}, FigureColumn{"core_clock", "CORE"},
    FigureColumn{"gfx_clock", "GFX"},       FigureColumn{"gfx_voltage", "VOLTAGE"},
    FigureColumn{"dvfs_level", "LEVEL"},
};

Figure level_figure(const std::optional<int64_t>& level)
{
    return level && *level >= 0 && *level < static_cast<int64_t>(kLevelNames.size())
               ? Figure{std::string{kLevelNames.at(static_cast<std::size_t>(*level))}}
               : std::nullopt;
}

}  // namespace

MonitorView<Figures> clocks_view()
{
    return figure_view("nimba-smi.clocks.1", kColumns);
}

Figures clock_figures(const ClockReading& reading)
{
    return {figure(reading.engine),     figure(reading.video), figure(reading.memory),
            figure(reading.core),       figure(reading.gfx),   figure(reading.gfx_voltage),
            level_figure(reading.level)};
}

}  // namespace nimba::smi
