// SPDX-License-Identifier: MIT
// The fields of the DVFS settings that are read from and written to the driver.
#pragma once

#include "nimba_mgmt_interface.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace nimba {

enum class DvfsWidth { k16, k32 };
enum class DvfsBase { kHexadecimal, kDecimal };

struct DvfsField {
    std::size_t offset;
    DvfsWidth width;
    const char* node;
    const char* key;   // what stands before the value in the node's text
    DvfsBase base;     // of the value behind the key
    const char* line;  // that sets the value
};

// The level is told and set by words: see kDvfsLevels. Its field has neither key nor line.
inline constexpr const char* kDvfsLevelNode = "dvfs_level";

// In the order in which they are written. Fields of one node stand together.
inline constexpr std::array<DvfsField, 23> kDvfsFields{{
    // clang-format off
    {offsetof(DvfsRegisterState, power_mode),          DvfsWidth::k32, "power_mode",          "power_mode:0x",            DvfsBase::kHexadecimal, "0x%x\n"},
    {offsetof(DvfsRegisterState, power_gating_3d),     DvfsWidth::k16, "pwm_wait_count",      "pg_3d:0x",                 DvfsBase::kHexadecimal, "0 0 %x\n"},
    {offsetof(DvfsRegisterState, power_gating_vcp),    DvfsWidth::k16, "pwm_wait_count",      "pg_vcp:0x",                DvfsBase::kHexadecimal, "0 1 %x\n"},
    {offsetof(DvfsRegisterState, power_gating_vpp),    DvfsWidth::k16, "pwm_wait_count",      "pg_vpp:0x",                DvfsBase::kHexadecimal, "0 2 %x\n"},
    {offsetof(DvfsRegisterState, clock_gating_3d),     DvfsWidth::k16, "pwm_wait_count",      "cg_3d:0x",                 DvfsBase::kHexadecimal, "1 0 %x\n"},
    {offsetof(DvfsRegisterState, clock_gating_vcp),    DvfsWidth::k16, "pwm_wait_count",      "cg_vcp:0x",                DvfsBase::kHexadecimal, "1 1 %x\n"},
    {offsetof(DvfsRegisterState, clock_gating_vpp),    DvfsWidth::k16, "pwm_wait_count",      "cg_vpp:0x",                DvfsBase::kHexadecimal, "1 2 %x\n"},
    {offsetof(DvfsRegisterState, dvfs_mode),           DvfsWidth::k32, "dvfs_mode",           "dvfs_mode:0x",             DvfsBase::kHexadecimal, "0x%x\n"},
    {offsetof(DvfsRegisterState, dvfs_level),          DvfsWidth::k32, kDvfsLevelNode,        nullptr,                    DvfsBase::kHexadecimal, nullptr},
    {offsetof(DvfsRegisterState, gfx_check_size),      DvfsWidth::k32, "dvfs_control_params", "gfx_dvfs_checksize:0x",    DvfsBase::kHexadecimal, "0 0 %x\n"},
    {offsetof(DvfsRegisterState, vcp0_check_size),     DvfsWidth::k32, "dvfs_control_params", "vcp0_dvfs_checksize:0x",   DvfsBase::kHexadecimal, "1 0 %x\n"},
    {offsetof(DvfsRegisterState, vcp1_check_size),     DvfsWidth::k32, "dvfs_control_params", "vcp1_dvfs_checksize:0x",   DvfsBase::kHexadecimal, "2 0 %x\n"},
    {offsetof(DvfsRegisterState, vpp_check_size),      DvfsWidth::k32, "dvfs_control_params", "vpp_dvfs_checksize:0x",    DvfsBase::kHexadecimal, "3 0 %x\n"},
    {offsetof(DvfsRegisterState, gfx_high_threshold),  DvfsWidth::k32, "dvfs_control_params", "gfx_dvfs_h_threshold:0x",  DvfsBase::kHexadecimal, "0 1 %x\n"},
    {offsetof(DvfsRegisterState, vcp0_high_threshold), DvfsWidth::k32, "dvfs_control_params", "vcp0_dvfs_h_threshold:0x", DvfsBase::kHexadecimal, "1 1 %x\n"},
    {offsetof(DvfsRegisterState, vcp1_high_threshold), DvfsWidth::k32, "dvfs_control_params", "vcp1_dvfs_h_threshold:0x", DvfsBase::kHexadecimal, "2 1 %x\n"},
    {offsetof(DvfsRegisterState, vpp_high_threshold),  DvfsWidth::k32, "dvfs_control_params", "vpp_dvfs_h_threshold:0x",  DvfsBase::kHexadecimal, "3 1 %x\n"},
    {offsetof(DvfsRegisterState, gfx_low_threshold),   DvfsWidth::k32, "dvfs_control_params", "gfx_dvfs_l_threshold:0x",  DvfsBase::kHexadecimal, "0 2 %x\n"},
    {offsetof(DvfsRegisterState, vcp0_low_threshold),  DvfsWidth::k32, "dvfs_control_params", "vcp0_dvfs_l_threshold:0x", DvfsBase::kHexadecimal, "1 2 %x\n"},
    {offsetof(DvfsRegisterState, vcp1_low_threshold),  DvfsWidth::k32, "dvfs_control_params", "vcp1_dvfs_l_threshold:0x", DvfsBase::kHexadecimal, "2 2 %x\n"},
    {offsetof(DvfsRegisterState, vpp_low_threshold),   DvfsWidth::k32, "dvfs_control_params", "vpp_dvfs_l_threshold:0x",  DvfsBase::kHexadecimal, "3 2 %x\n"},
    {offsetof(DvfsRegisterState, gfx_clock),           DvfsWidth::k32, "dvfs_clk_voltage",    "gfx_clock:",               DvfsBase::kDecimal,     "c 0 %d\n"},
    {offsetof(DvfsRegisterState, gfx_voltage),         DvfsWidth::k32, "dvfs_clk_voltage",    "gfx_voltage:",             DvfsBase::kDecimal,     "v 0 %d\n"},
    // clang-format on
}};

struct DvfsLevel {
    uint32_t level;
    const char* text;  // in the node
    const char* line;  // that sets it
};

// In the order in which the texts are looked for. The line of the first stands for every other
// level, too.
inline constexpr std::array<DvfsLevel, 3> kDvfsLevels{{
    {DVFS_LEVEL_BALANCE, "dvfs_level:balance", "balance\n"},
    {DVFS_LEVEL_LOW_POWER, "dvfs_level:lowpower", "lowpower\n"},
    {DVFS_LEVEL_PERFORMANCE, "dvfs_level:performance", "performance\n"},
}};

}  // namespace nimba
