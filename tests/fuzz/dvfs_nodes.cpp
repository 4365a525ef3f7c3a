// SPDX-License-Identifier: MIT
// The texts of the DVFS nodes, against scanning a copy of the one buffer that all of them share;
// and the lines that are written to them, against a table of what each setting's says.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/node_directory.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::array kNodes{
    "power_mode",       "pwm_wait_count", "dvfs_mode", "dvfs_control_params",
    "dvfs_clk_voltage", "dvfs_level",     "vclk",      "mclk"};
enum Node { kPowerMode, kGating, kMode, kControl, kClocks, kLevel };
constexpr std::size_t kBufferSize = 512;
constexpr std::size_t kMostBytes = 2'000;

using State = DvfsRegisterState;

// A setting: one of these members, the node, what stands before its value there, and the line that
// sets it.
struct Setting {
    uint32_t State::*word;
    int16_t State::*half;
    int32_t State::*number;
    Node node;
    const char* key;
    const char* line;
};

constexpr Setting word(uint32_t State::*member, Node node, const char* key, const char* line)
{
    return {member, nullptr, nullptr, node, key, line};
}

constexpr Setting half(int16_t State::*member, const char* key, const char* line)
{
    return {nullptr, member, nullptr, kGating, key, line};
}

constexpr Setting number(int32_t State::*member, const char* key, const char* line)
{
    return {nullptr, nullptr, member, kClocks, key, line};
}

// In the order in which they are written. The level's line depends on its value.
constexpr std::array kSettings{
    // clang-format off
    word(&State::power_mode, kPowerMode, "power_mode:0x", "0x%x\n"),
    half(&State::power_gating_3d, "pg_3d:0x", "0 0 %x\n"),
    half(&State::power_gating_vcp, "pg_vcp:0x", "0 1 %x\n"),
    half(&State::power_gating_vpp, "pg_vpp:0x", "0 2 %x\n"),
    half(&State::clock_gating_3d, "cg_3d:0x", "1 0 %x\n"),
    half(&State::clock_gating_vcp, "cg_vcp:0x", "1 1 %x\n"),
    half(&State::clock_gating_vpp, "cg_vpp:0x", "1 2 %x\n"),
    word(&State::dvfs_mode, kMode, "dvfs_mode:0x", "0x%x\n"),
    word(&State::dvfs_level, kLevel, nullptr, nullptr),
    word(&State::gfx_check_size, kControl, "gfx_dvfs_checksize:0x", "0 0 %x\n"),
    word(&State::vcp0_check_size, kControl, "vcp0_dvfs_checksize:0x", "1 0 %x\n"),
    word(&State::vcp1_check_size, kControl, "vcp1_dvfs_checksize:0x", "2 0 %x\n"),
    word(&State::vpp_check_size, kControl, "vpp_dvfs_checksize:0x", "3 0 %x\n"),
    word(&State::gfx_high_threshold, kControl, "gfx_dvfs_h_threshold:0x", "0 1 %x\n"),
    word(&State::vcp0_high_threshold, kControl, "vcp0_dvfs_h_threshold:0x", "1 1 %x\n"),
    word(&State::vcp1_high_threshold, kControl, "vcp1_dvfs_h_threshold:0x", "2 1 %x\n"),
    word(&State::vpp_high_threshold, kControl, "vpp_dvfs_h_threshold:0x", "3 1 %x\n"),
    word(&State::gfx_low_threshold, kControl, "gfx_dvfs_l_threshold:0x", "0 2 %x\n"),
    word(&State::vcp0_low_threshold, kControl, "vcp0_dvfs_l_threshold:0x", "1 2 %x\n"),
    word(&State::vcp1_low_threshold, kControl, "vcp1_dvfs_l_threshold:0x", "2 2 %x\n"),
    word(&State::vpp_low_threshold, kControl, "vpp_dvfs_l_threshold:0x", "3 2 %x\n"),
    number(&State::gfx_clock, "gfx_clock:", "c 0 %d\n"),
    number(&State::gfx_voltage, "gfx_voltage:", "v 0 %d\n"),
    // clang-format on
};

NodeDirectory& nodes()
{
    static NodeDirectory nodes{
        "power_mode",       "pwm_wait_count", "dvfs_mode", "dvfs_control_params",
        "dvfs_clk_voltage", "dvfs_level",     "vclk",      "mclk"};
    return nodes;
}

// The buffer of all nodes: what a short one does not overwrite stays.
class PlainBuffer final {
  public:
    void read(const char* node)
    {
        const std::string text = nodes().text(node).substr(0, kBufferSize);
        bytes_.replace(0, text.size(), text);
    }

    // What stands behind the key, which the buffer's last byte cannot be part of; null when it is
    // not found.
    [[nodiscard]] const char* behind(std::string_view key) const
    {
        const std::size_t at = std::string_view{bytes_}.substr(0, kBufferSize - 1).find(key);
        return at == std::string_view::npos ? nullptr : bytes_.c_str() + at + key.size();
    }

  private:
    std::string bytes_ = std::string(kBufferSize, '\0');
};

void set(State& state, const Setting& setting, uint32_t value)
{
    if (setting.word != nullptr) {
        state.*setting.word = value;
    } else if (setting.half != nullptr) {
        state.*setting.half = static_cast<int16_t>(value);
    } else {
        state.*setting.number = static_cast<int32_t>(value);
    }
}

// With its sign when it has one.
uint32_t value_of(const State& state, const Setting& setting)
{
    if (setting.word != nullptr) {
        return state.*setting.word;
    }
    return static_cast<uint32_t>(setting.half != nullptr ? int32_t{state.*setting.half}
                                                         : state.*setting.number);
}

void read_setting(const PlainBuffer& buffer, const Setting& setting, State& state)
{
    uint32_t value = 0;
    const char* const text = buffer.behind(setting.key);
    // NOLINTNEXTLINE(cert-err34-c): scanf's rules are what the texts are defined by
    if (text != nullptr &&
        std::sscanf(text, setting.number != nullptr ? "%d" : "%x", &value) == 1) {
        set(state, setting, value);
    }
}

uint32_t value_in(const char* node)
{
    return static_cast<uint32_t>(
        std::strtol(nodes().text(node).substr(0, 64).c_str(), nullptr, 10));
}

void read_plainly(State& state)
{
    PlainBuffer buffer;
    for (std::size_t node = 0; node < kLevel; ++node) {
        buffer.read(kNodes[node]);
        for (const Setting& setting : kSettings) {
            if (setting.node == node) {
                read_setting(buffer, setting, state);
            }
        }
    }
    buffer.read("dvfs_level");
    if (buffer.behind("dvfs_level:balance") != nullptr) {
        state.dvfs_level = 0;
    } else if (buffer.behind("dvfs_level:lowpower") != nullptr) {
        state.dvfs_level = 1;
    } else if (buffer.behind("dvfs_level:performance") != nullptr) {
        state.dvfs_level = 2;
    }
    state.video_clock = value_in("vclk");
    state.memory_clock = value_in("mclk");
}

using Texts = std::array<std::string, kNodes.size()>;

Texts shown()
{
    Texts texts;
    for (std::size_t node = 0; node < kNodes.size(); ++node) {
        texts[node] = nodes().text(kNodes[node]);
    }
    return texts;
}

std::string line_of(const Setting& setting, uint32_t value)
{
    if (setting.line == nullptr) {
        return value == 1 ? "lowpower\n" : value == 2 ? "performance\n" : "balance\n";
    }
    std::array<char, 32> line{};
    std::snprintf(line.data(), line.size(), setting.line, value);
    return line.data();
}

// What is written stands over the beginning of a node's text; nothing is where there is no node.
void write_over(Texts& texts, const Setting& setting, uint32_t value)
{
    if (nodes().has(kNodes[setting.node])) {
        const std::string line = line_of(setting, value);
        texts[setting.node].replace(0, line.size(), line);
    }
}

// Each setting for itself, as lines to one node stand one over the other.
void check_each_write(const State& read, const State& wanted, const Texts& before)
{
    for (const Setting& setting : kSettings) {
        const uint32_t value = value_of(wanted, setting);
        if (value == value_of(read, setting)) {
            continue;
        }
        State changed = read;
        set(changed, setting, value);
        Texts expected = before;
        write_over(expected, setting, value);
        set_data_to_dvfs_register(&changed);
        check(shown() == expected, "a setting that is changed is written by its line");
        if (nodes().has(kNodes[setting.node])) {
            nodes().show(kNodes[setting.node], before[setting.node]);
        }
    }
}

void check_writes(const State& read, const State& wanted)
{
    const Texts before = shown();
    set_data_to_dvfs_register(&read);
    check(shown() == before, "settings that are those read last are not written");
    check_each_write(read, wanted, before);
    Texts expected = before;
    for (const Setting& setting : kSettings) {
        if (value_of(wanted, setting) != value_of(read, setting)) {
            write_over(expected, setting, value_of(wanted, setting));
        }
    }
    set_data_to_dvfs_register(&wanted);
    check(shown() == expected, "settings that are changed are written in their order");
}

}  // namespace

void try_input(std::string_view input)
{
    static gpu_infos infos{};
    infos.jw_info_dir_fd = nodes().descriptor();
    pCurrent_gpu_infos = &infos;
    const uint8_t control = take_byte(input);
    const auto wanted = take_number<State>(input);
    const std::vector<std::string_view> texts = split_into(input, kNodes.size());
    for (std::size_t node = 0; node < kNodes.size(); ++node) {
        nodes().show(kNodes[node], repeated(texts[node], control, kMostBytes));
    }
    State state = wanted;
    State expected = wanted;
    uint32_t valid = 0;
    get_data_from_dvfs_register(&state, &valid);
    read_plainly(expected);
    check(std::memcmp(&state, &expected, sizeof state) == 0,
          "settings are those that the nodes tell, or stay");
    check_writes(state, wanted);
}

}  // namespace nimba::fuzz
