// SPDX-License-Identifier: MIT
#include "driver/state_nodes.hpp"

#include "driver/adapter_state.hpp"
#include "driver/command_text.hpp"

#include <fmt/core.h>

#include <array>

namespace nimba::sim {
namespace {

constexpr int kVideoEngines = 2;  // VCP0, VCP1
constexpr unsigned kMebibyteBits = 20;

template <typename Value>
std::string line(const Value& value)
{
    return fmt::format("{}\n", value);
}

template <bool AdapterState::*Member>
constexpr StateNode switch_node(std::string_view name)
{
    return {name, [](const AdapterState& state) { return line(state.*Member ? 1 : 0); },
            [](AdapterState& state, std::string_view command) {
                const auto on = switch_of(command);
                state.*Member = on.value_or(state.*Member);
                return on.has_value();
            }};
}

template <std::string (Dvfs::*Text)() const, bool (Dvfs::*Write)(std::string_view)>
constexpr StateNode dvfs_node(std::string_view name)
{
    return {
        name, [](const AdapterState& state) { return (state.dvfs.*Text)(); },
        [](AdapterState& state, std::string_view command) { return (state.dvfs.*Write)(command); }};
}

template <std::size_t Word>
constexpr StateNode usage_node(std::string_view name)
{
    return {name, [](const AdapterState& state) { return line(state.usage().at(Word)); }, nullptr};
}

template <int64_t ClockSet::*Clock>
constexpr StateNode clock_node(std::string_view name)
{
    return {name, [](const AdapterState& state) { return line(state.dvfs.clocks().*Clock); },
            nullptr};
}

template <auto Member>
constexpr StateNode board_node(std::string_view name)
{
    return {name, [](const AdapterState& state) { return line(state.board.*Member); }, nullptr};
}

constexpr StateNode fan_node(std::string_view name)
{
    return {name, [](const AdapterState& state) { return line(state.cooling.fan_speed()); },
            nullptr};
}

bool write_misc_ctl_flag(AdapterState& state, std::string_view command)
{
    const auto flags = take_decimal(command);
    if (!flags || command != "\n") {
        return false;
    }
    state.misc_ctl_flag = *flags;
    return true;
}

std::string fps_count(const AdapterState& state)
{
    return fmt::format("{} {}\n", static_cast<uint32_t>(state.activity.flips()),
                       state.activity.last_flip());
}

std::string frame_buffer_size(const AdapterState& state)
{
    return line(state.frame_buffer().total >> kMebibyteBits);
}

std::string free_frame_buffer(const AdapterState& state)
{
    const MemorySegment memory = state.frame_buffer();
    return line((memory.total - memory.used) >> kMebibyteBits);
}

std::string segment_info(const AdapterState& state)
{
    return segment_info_text(state.segments.all());
}

// The one that a QV chip's driver does not have is the last.
constexpr std::array kInfoNodes{
    usage_node<kUsage3d>("engine_3d_usage"),
    usage_node<kUsageVcp>("engine_vcp_usage"),
    StateNode{"engine_vcp_info", [](const AdapterState&) { return line(kVideoEngines); }, nullptr},
    usage_node<kUsageVpp>("engine_vpp_usage"),
    fan_node("fan_speed"),
    board_node<&AdapterBoard::firmware_version>("vbios_version"),
    board_node<&AdapterBoard::pmp_version>("pmp_version"),
    board_node<&AdapterBoard::release_date>("release_date"),
    board_node<&AdapterBoard::driver_version>("driver_version"),
    board_node<&AdapterBoard::miu_channels>("miu_channel_num"),
    board_node<&AdapterBoard::slice_mask>("slice_mask"),
    StateNode{"fb_size", frame_buffer_size, nullptr},
    StateNode{"free_fb_mem", free_frame_buffer, nullptr},
    clock_node<&ClockSet::engine>("eclk"),
    clock_node<&ClockSet::video>("vclk"),
    clock_node<&ClockSet::memory>("mclk"),
    switch_node<&AdapterState::enable_perf>("enable_perf"),
    switch_node<&AdapterState::enable_usage>("enable_usage"),
    StateNode{"fps_count", fps_count, nullptr},
    StateNode{"rxa_blt_scn_cnt",
              [](const AdapterState& state) { return line(state.activity.blits()); }, nullptr},
    StateNode{"misc_ctl_flag", [](const AdapterState& state) { return line(state.misc_ctl_flag); },
              write_misc_ctl_flag},
    dvfs_node<&Dvfs::power_mode_text, &Dvfs::write_power_mode>("power_mode"),
    StateNode{"power_case", [](const AdapterState&) { return line(0); }, nullptr},
    dvfs_node<&Dvfs::gating_text, &Dvfs::write_gating>("pwm_wait_count"),
    dvfs_node<&Dvfs::mode_text, &Dvfs::write_mode>("dvfs_mode"),
    dvfs_node<&Dvfs::parameters_text, &Dvfs::write_parameter>("dvfs_control_params"),
    dvfs_node<&Dvfs::clock_voltage_text, &Dvfs::write_clock_or_voltage>("dvfs_clk_voltage"),
    dvfs_node<&Dvfs::level_text, &Dvfs::write_level>("dvfs_level"),
    StateNode{"coreclk", [](const AdapterState& state) { return line(state.dvfs.core_clock()); },
              nullptr},
    StateNode{"segment_info", segment_info, nullptr},
};

constexpr std::array kHwmonNodes{
    StateNode{"name", [](const AdapterState& state) { return line(state.driver_dir); }, nullptr},
    StateNode{"temp1_input",
              [](const AdapterState& state) {
                  return fmt::format("{} *C\n", state.cooling.temperature());
              },
              nullptr},
    fan_node("fan0_input"),
    fan_node("fan1_input"),
};

}  // namespace

std::span<const StateNode> info_nodes()
{
    return kInfoNodes;
}

std::span<const StateNode> qv_info_nodes()
{
    return std::span{kInfoNodes}.first<kInfoNodes.size() - 1>();
}

std::span<const StateNode> hwmon_nodes()
{
    return kHwmonNodes;
}

}  // namespace nimba::sim
