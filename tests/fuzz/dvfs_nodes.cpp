// SPDX-License-Identifier: MIT
// The texts of the DVFS nodes, against scanning a copy of the one buffer that all of them share.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/node_directory.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "power/dvfs_fields.hpp"

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
constexpr std::size_t kBufferSize = 512;
constexpr std::size_t kMostBytes = 2'000;

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

void read_field(const PlainBuffer& buffer, const DvfsField& field, DvfsRegisterState& state)
{
    unsigned value = 0;
    const char* const format = field.base == DvfsBase::kDecimal ? "%d" : "%x";
    const char* const text = buffer.behind(field.key);
    // NOLINTNEXTLINE(cert-err34-c): scanf's rules are what the texts are defined by
    if (text != nullptr && std::sscanf(text, format, &value) == 1) {
        std::memcpy(reinterpret_cast<char*>(&state) + field.offset, &value,
                    field.width == DvfsWidth::k16 ? 2 : 4);
    }
}

uint32_t value_in(const char* node)
{
    return static_cast<uint32_t>(
        std::strtol(nodes().text(node).substr(0, 64).c_str(), nullptr, 10));
}

void read_plainly(DvfsRegisterState& state)
{
    PlainBuffer buffer;
    for (std::size_t node = 0; node < 5; ++node) {
        buffer.read(kNodes[node]);
        for (const DvfsField& field : kDvfsFields) {
            if (field.key != nullptr && std::strcmp(field.node, kNodes[node]) == 0) {
                read_field(buffer, field, state);
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

std::array<std::string, kNodes.size()> shown()
{
    std::array<std::string, kNodes.size()> texts;
    for (std::size_t node = 0; node < kNodes.size(); ++node) {
        texts[node] = nodes().text(kNodes[node]);
    }
    return texts;
}

void check_writes(const DvfsRegisterState& read, const DvfsRegisterState& wanted)
{
    const auto before = shown();
    set_data_to_dvfs_register(&read);
    check(shown() == before, "settings that are those read last are not written");
    set_data_to_dvfs_register(&wanted);
    const auto after = shown();
    for (std::size_t node = 0; node < kNodes.size(); ++node) {
        check(after[node].size() >= before[node].size(), "a line is written over a node's text");
    }
}

}  // namespace

void try_input(std::string_view input)
{
    static gpu_infos infos{};
    infos.jw_info_dir_fd = nodes().descriptor();
    pCurrent_gpu_infos = &infos;
    const uint8_t control = take_byte(input);
    const auto wanted = take_number<DvfsRegisterState>(input);
    const std::vector<std::string_view> texts = split_into(input, kNodes.size());
    for (std::size_t node = 0; node < kNodes.size(); ++node) {
        nodes().show(kNodes[node], repeated(texts[node], control, kMostBytes));
    }
    DvfsRegisterState state = wanted;
    DvfsRegisterState expected = wanted;
    uint32_t valid = 0;
    get_data_from_dvfs_register(&state, &valid);
    read_plainly(expected);
    check(std::memcmp(&state, &expected, sizeof state) == 0,
          "settings are those that the nodes tell, or stay");
    check_writes(state, wanted);
}

}  // namespace nimba::fuzz
