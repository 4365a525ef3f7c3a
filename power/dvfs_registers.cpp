// SPDX-License-Identifier: MIT
// Reading and changing the power and DVFS settings of the current adapter.
#include "core/current_adapter.hpp"
#include "core/node_access.hpp"
#include "core/node_buffer.hpp"
#include "core/scan_text.hpp"
#include "nimba_mgmt_interface.h"
#include "power/dvfs_fields.hpp"

#include <cstring>
#include <string_view>

int32_t dvfs_register_state_data_flushed = 1;

namespace nimba {
namespace {

// What was read last, with which writes compare. Written by reading alone; a write leaves it, so
// that the same write does the same again.
DvfsRegisterState last_read{};

using DvfsBuffer = NodeBuffer<512>;

// The field's value, with its sign when it has 16 bits.
int32_t field_value(const DvfsRegisterState& state, const DvfsField& field)
{
    const char* const place = reinterpret_cast<const char*>(&state) + field.offset;
    if (field.width == DvfsWidth::k16) {
        int16_t value = 0;
        std::memcpy(&value, place, sizeof value);
        return value;
    }
    int32_t value = 0;
    std::memcpy(&value, place, sizeof value);
    return value;
}

// Of a value that is too long for the field its low bits count.
void store(DvfsRegisterState& state, const DvfsField& field, uint32_t value)
{
    char* const place = reinterpret_cast<char*>(&state) + field.offset;
    std::memcpy(place, &value, field.width == DvfsWidth::k16 ? sizeof(int16_t) : sizeof value);
}

void read_field(const DvfsBuffer& node, const DvfsField& field, DvfsRegisterState& state)
{
    const char* const text = node.behind(field.key);
    if (text == nullptr) {
        return;
    }
    uint32_t value = 0;
    const char* const format = field.base == DvfsBase::kDecimal ? "%d" : "%x";
    if (scan_text(text, format, &value) == 1) {
        store(state, field, value);
    }
}

// The text of a node that is shorter than the one before it is followed by the rest of that.
void read_fields(DvfsBuffer& node, DvfsRegisterState& state)
{
    std::string_view held;
    for (const DvfsField& field : kDvfsFields) {
        if (field.key == nullptr) {
            continue;
        }
        if (held != field.node) {
            held = field.node;
            node.read(info_directory(), field.node);
        }
        read_field(node, field, state);
    }
}

void read_level(DvfsBuffer& node, DvfsRegisterState& state)
{
    node.read(info_directory(), kDvfsLevelNode);
    for (const DvfsLevel& level : kDvfsLevels) {
        if (node.behind(level.text) != nullptr) {
            state.dvfs_level = level.level;
            return;
        }
    }
}

const char* level_line(uint32_t value)
{
    for (const DvfsLevel& level : kDvfsLevels) {
        if (level.level == value) {
            return level.line;
        }
    }
    return kDvfsLevels.front().line;
}

void write_field(const DvfsField& field, int32_t value)
{
    if (field.line == nullptr) {
        printf_node_at(info_directory(), field.node, "%s",
                       level_line(static_cast<uint32_t>(value)));
    } else {
        printf_node_at(info_directory(), field.node, field.line, value);
    }
}

}  // namespace
}  // namespace nimba

int32_t gpuinfo_get_data_from_dvfs_register(DvfsRegisterState* state)
{
    nimba::DvfsBuffer node;
    nimba::read_fields(node, *state);
    state->video_clock = static_cast<uint32_t>(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_VCLK));
    state->memory_clock = static_cast<uint32_t>(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MCLK));
    nimba::read_level(node, *state);
    nimba::last_read = *state;
    return 0;
}

int32_t gpuinfo_set_data_to_dvfs_register(const DvfsRegisterState* state)
{
    for (const nimba::DvfsField& field : nimba::kDvfsFields) {
        const int32_t value = nimba::field_value(*state, field);
        if (value != nimba::field_value(nimba::last_read, field)) {
            nimba::write_field(field, value);
        }
    }
    return 0;
}

int32_t get_data_from_dvfs_register(DvfsRegisterState* state, uint32_t* valid)
{
    gpuinfo_get_data_from_dvfs_register(state);
    dvfs_register_state_data_flushed = 1;
    *valid = 1;
    return 0;
}

int32_t set_data_to_dvfs_register(const DvfsRegisterState* state)
{
    gpuinfo_set_data_to_dvfs_register(state);
    dvfs_register_state_data_flushed = 0;
    return 0;
}

int32_t get_dvfs_info(DvfsClockInfo* info)
{
    info->engine_clock = static_cast<uint32_t>(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_ECLK));
    info->video_clock = static_cast<uint32_t>(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_VCLK));
    info->memory_clock = static_cast<uint32_t>(gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MCLK));
    return 0;
}
