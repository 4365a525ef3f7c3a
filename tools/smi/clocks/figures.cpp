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

}  // namespace

std::optional<std::string> level_name(const ClockReading& reading)
{
    const auto& level = reading.level;
    return level && *level >= 0 && *level < static_cast<int64_t>(kLevelNames.size())
               ? std::optional<std::string>(kLevelNames.at(static_cast<std::size_t>(*level)))
               : std::nullopt;
}

MonitorView<Figures> clocks_view()
{
    return figure_view("nimba-smi.clocks.1", kColumns);
}

Figures clock_figures(const ClockReading& reading)
{
    const auto level = level_name(reading);
    return {figure(reading.engine),
            figure(reading.video),
            figure(reading.memory),
            figure(reading.core),
            figure(reading.gfx),
            figure(reading.gfx_voltage),
            level ? Figure{*level} : std::nullopt};
}

}  // namespace nimba::smi
