// SPDX-License-Identifier: MIT OR GPL-2.0
/* The settings: which node shows which, and the command that sets each. */
#include "reference.h"

#include <linux/string.h>
#include <linux/sysfs.h>

#define LEVEL_NODE "dvfs_level"

struct setting {
    const char* node;
    const char* line;    /* null: the level, which is a word */
    const char* command; /* whole, with its newline */
    u32 least;
    u32 greatest;
    u32 initial;
};

// clang-format off
static const struct setting settings[REFERENCE_SETTINGS] = {
    {"power_mode",          "power_mode:0x%x\n",            "0x%x\n",   0,   U32_MAX, 0x2},
    {"pwm_wait_count",      "pg_3d:0x%x\n",                 "0 0 %x\n", 0,   U16_MAX, 0x61},
    {"pwm_wait_count",      "cg_3d:0x%x\n",                 "1 0 %x\n", 0,   U16_MAX, 0x11},
    {"pwm_wait_count",      "pg_vcp:0x%x\n",                "0 1 %x\n", 0,   U16_MAX, 0x62},
    {"pwm_wait_count",      "cg_vcp:0x%x\n",                "1 1 %x\n", 0,   U16_MAX, 0x12},
    {"pwm_wait_count",      "pg_vpp:0x%x\n",                "0 2 %x\n", 0,   U16_MAX, 0x63},
    {"pwm_wait_count",      "cg_vpp:0x%x\n",                "1 2 %x\n", 0,   U16_MAX, 0x13},
    {"dvfs_mode",           "dvfs_mode:0x%x\n",             "0x%x\n",   0,   2,       0x1},
    {"dvfs_control_params", "gfx_dvfs_checksize:0x%x\n",    "0 0 %x\n", 0,   U32_MAX, 0x40},
    {"dvfs_control_params", "gfx_dvfs_h_threshold:0x%x\n",  "0 1 %x\n", 0,   U32_MAX, 0x50},
    {"dvfs_control_params", "gfx_dvfs_l_threshold:0x%x\n",  "0 2 %x\n", 0,   U32_MAX, 0x20},
    {"dvfs_control_params", "vcp0_dvfs_checksize:0x%x\n",   "1 0 %x\n", 0,   U32_MAX, 0x41},
    {"dvfs_control_params", "vcp0_dvfs_h_threshold:0x%x\n", "1 1 %x\n", 0,   U32_MAX, 0x51},
    {"dvfs_control_params", "vcp0_dvfs_l_threshold:0x%x\n", "1 2 %x\n", 0,   U32_MAX, 0x21},
    {"dvfs_control_params", "vcp1_dvfs_checksize:0x%x\n",   "2 0 %x\n", 0,   U32_MAX, 0x42},
    {"dvfs_control_params", "vcp1_dvfs_h_threshold:0x%x\n", "2 1 %x\n", 0,   U32_MAX, 0x52},
    {"dvfs_control_params", "vcp1_dvfs_l_threshold:0x%x\n", "2 2 %x\n", 0,   U32_MAX, 0x22},
    {"dvfs_control_params", "vpp_dvfs_checksize:0x%x\n",    "3 0 %x\n", 0,   U32_MAX, 0x43},
    {"dvfs_control_params", "vpp_dvfs_h_threshold:0x%x\n",  "3 1 %x\n", 0,   U32_MAX, 0x53},
    {"dvfs_control_params", "vpp_dvfs_l_threshold:0x%x\n",  "3 2 %x\n", 0,   U32_MAX, 0x23},
    {"dvfs_clk_voltage",    "gfx_clock:%u\n",               "c 0 %u\n", 100, 2000,    640},
    {"dvfs_clk_voltage",    "gfx_voltage:%u\n",             "v 0 %u\n", 600, 1300,    810},
    {LEVEL_NODE,            NULL,                           NULL,       0,   2,       0},
};
// clang-format on

/* By the number of the level. */
static const char* const levels[] = {"balance\n", "lowpower\n", "performance\n"};

void reference_settings_initialise(u32* numbers)
{
    size_t i;

    for (i = 0; i < ARRAY_SIZE(settings); i++) {
        numbers[i] = settings[i].initial;
    }
}

ssize_t reference_setting_show(const u32* numbers, const char* node, char* text)
{
    ssize_t length = 0;
    size_t i;

    for (i = 0; i < ARRAY_SIZE(settings); i++) {
        if (strcmp(settings[i].node, node) != 0) {
            continue;
        }
        if (settings[i].line) {
            length += sysfs_emit_at(text, length, settings[i].line, numbers[i]);
        } else {
            length += sysfs_emit_at(text, length, LEVEL_NODE ":%s", levels[numbers[i]]);
        }
    }
    return length;
}

static int store_level(u32* number, const char* command)
{
    size_t i;

    for (i = 0; i < ARRAY_SIZE(levels); i++) {
        if (strcmp(levels[i], command) == 0) {
            *number = i;
            return 0;
        }
    }
    return -EINVAL;
}

/* A command is as the table has it to the last character. A negative number of 16 bits comes as one
 * of 32. */
static int store_number(const struct setting* setting, u32* number, const char* command)
{
    char expected[32];
    u32 value;

    if (sscanf(command, setting->command, &value) != 1) {
        return -EINVAL;
    }
    snprintf(expected, sizeof(expected), setting->command, value);
    if (strcmp(expected, command) != 0) {
        return -EINVAL;
    }
    if (setting->greatest == U16_MAX && value >= (u32)S16_MIN) {
        value &= U16_MAX;
    }
    if (value < setting->least || value > setting->greatest) {
        return -EINVAL;
    }
    *number = value;
    return 0;
}

int reference_setting_store(u32* numbers, const char* node, const char* command)
{
    int status = -EINVAL;
    size_t i;

    for (i = 0; i < ARRAY_SIZE(settings) && status; i++) {
        if (strcmp(settings[i].node, node) == 0) {
            status = settings[i].command ? store_number(&settings[i], &numbers[i], command)
                                         : store_level(&numbers[i], command);
        }
    }
    return status;
}
