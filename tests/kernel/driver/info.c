// SPDX-License-Identifier: MIT OR GPL-2.0
/* The nodes of the info directory, jw_info or qv_info, and the link's width beside it, which the
 * kernel shows of PCI Express devices alone. */
#include "reference.h"

#include <linux/kernel.h>
#include <linux/string.h>
#include <linux/sysfs.h>

struct node {
    struct device_attribute attribute;
    ssize_t (*show)(const struct reference_adapter* adapter, const struct node* node, char* text);
    int (*store)(struct reference_adapter* adapter, const struct node* node, const char* command);
    int value; /* of the first adapter */
    int step;  /* what each further adapter has more */
};

static ssize_t show_number(const struct reference_adapter* adapter, const struct node* node,
                           char* text)
{
    return sysfs_emit(text, "%d\n", node->value + node->step * (int)adapter->number);
}

/* The use of an engine: nothing while it is not accounted for. */
static ssize_t show_usage(const struct reference_adapter* adapter, const struct node* node,
                          char* text)
{
    return adapter->state.usage ? show_number(adapter, node, text) : sysfs_emit(text, "0\n");
}

static ssize_t show_setting(const struct reference_adapter* adapter, const struct node* node,
                            char* text)
{
    return reference_setting_show(adapter->state.settings, node->attribute.attr.name, text);
}

static int store_setting(struct reference_adapter* adapter, const struct node* node,
                         const char* command)
{
    return reference_setting_store(adapter->state.settings, node->attribute.attr.name, command);
}

static ssize_t show_flag(const struct reference_adapter* adapter, const struct node* node,
                         char* text)
{
    return sysfs_emit(text, "%d\n", (s32)adapter->state.flag);
}

static int store_flag(struct reference_adapter* adapter, const struct node* node,
                      const char* command)
{
    char expected[16];
    s32 flag;

    if (sscanf(command, "%d", &flag) != 1) {
        return -EINVAL;
    }
    snprintf(expected, sizeof(expected), "%d\n", flag);
    if (strcmp(expected, command) != 0) {
        return -EINVAL;
    }
    adapter->state.flag = flag;
    return 0;
}

static ssize_t show_enable_usage(const struct reference_adapter* adapter, const struct node* node,
                                 char* text)
{
    return sysfs_emit(text, "%d\n", adapter->state.usage);
}

static ssize_t show_enable_perf(const struct reference_adapter* adapter, const struct node* node,
                                char* text)
{
    return sysfs_emit(text, "%d\n", adapter->state.perf);
}

static int store_switch(bool* state, const char* command)
{
    if (!sysfs_streq(command, "0") && !sysfs_streq(command, "1")) {
        return -EINVAL;
    }
    *state = command[0] == '1';
    return 0;
}

static int store_enable_usage(struct reference_adapter* adapter, const struct node* node,
                              const char* command)
{
    return store_switch(&adapter->state.usage, command);
}

static int store_enable_perf(struct reference_adapter* adapter, const struct node* node,
                             const char* command)
{
    return store_switch(&adapter->state.perf, command);
}

static ssize_t show_flips(const struct reference_adapter* adapter, const struct node* node,
                          char* text)
{
    return sysfs_emit(text, "%u %llu\n", adapter->state.flips, adapter->state.flip_time);
}

static ssize_t show_blits(const struct reference_adapter* adapter, const struct node* node,
                          char* text)
{
    return sysfs_emit(text, "%llu\n", adapter->state.blits);
}

static ssize_t show_segments(const struct reference_adapter* adapter, const struct node* node,
                             char* text)
{
    const struct reference_segment* const segments = reference_family()->segments;
    ssize_t length = 0;
    int i;

    for (i = 0; i < REFERENCE_SEGMENTS && segments[i].total > 0; i++) {
        length += sysfs_emit_at(text, length, "segment_id:%d,total_size:%llu,used_size:%llu\n", i,
                                segments[i].total / 1000, segments[i].used / 1000);
    }
    return length;
}

static ssize_t node_show(struct device* device, struct device_attribute* attribute, char* text)
{
    const struct node* const node = container_of(attribute, struct node, attribute);
    struct reference_adapter* const adapter = dev_get_drvdata(device);
    ssize_t length;

    mutex_lock(&adapter->lock);
    length = node->show(adapter, node, text);
    mutex_unlock(&adapter->lock);
    return length;
}

/* One write is one command. */
static ssize_t node_store(struct device* device, struct device_attribute* attribute,
                          const char* command, size_t length)
{
    const struct node* const node = container_of(attribute, struct node, attribute);
    struct reference_adapter* const adapter = dev_get_drvdata(device);
    int status;

    mutex_lock(&adapter->lock);
    status = strlen(command) == length ? node->store(adapter, node, command) : -EINVAL;
    mutex_unlock(&adapter->lock);
    reference_count_write(adapter, status == 0);
    return status ?: length;
}

#define READ_ONLY(node) __ATTR(node, 0444, node_show, NULL)
#define WRITABLE(node) __ATTR(node, 0644, node_show, node_store)

#define NUMBER(node, first, more)                                                           \
    {                                                                                       \
        .attribute = READ_ONLY(node), .show = show_number, .value = (first), .step = (more) \
    }
#define USAGE(node, first)                                                            \
    {                                                                                 \
        .attribute = READ_ONLY(node), .show = show_usage, .value = (first), .step = 1 \
    }
#define SETTING(node)                                                             \
    {                                                                             \
        .attribute = WRITABLE(node), .show = show_setting, .store = store_setting \
    }

static struct node nodes[] = {
    NUMBER(eclk, 640, 10),
    NUMBER(vclk, 410, 10),
    NUMBER(mclk, 935, 10),
    NUMBER(coreclk, 720, 10),
    USAGE(engine_3d_usage, 61),
    USAGE(engine_vcp_usage, 36),
    USAGE(engine_vpp_usage, 23),
    NUMBER(engine_vcp_info, 7, 0),
    NUMBER(fan_speed, 1650, 1),
    NUMBER(vbios_version, 812, 0),
    NUMBER(pmp_version, 4, 0),
    NUMBER(release_date, 20250102, 0),
    NUMBER(driver_version, 2130, 0),
    NUMBER(miu_channel_num, 2, 0),
    NUMBER(slice_mask, 5, 0),
    NUMBER(fb_size, 4096, 0),
    NUMBER(free_fb_mem, 3072, 1),
    NUMBER(power_case, 6, 0),
    {.attribute = WRITABLE(enable_usage), .show = show_enable_usage, .store = store_enable_usage},
    {.attribute = WRITABLE(enable_perf), .show = show_enable_perf, .store = store_enable_perf},
    {.attribute = WRITABLE(misc_ctl_flag), .show = show_flag, .store = store_flag},
    {.attribute = READ_ONLY(fps_count), .show = show_flips},
    {.attribute = READ_ONLY(rxa_blt_scn_cnt), .show = show_blits},
    SETTING(power_mode),
    SETTING(pwm_wait_count),
    SETTING(dvfs_mode),
    SETTING(dvfs_control_params),
    SETTING(dvfs_clk_voltage),
    SETTING(dvfs_level),
    {.attribute = READ_ONLY(segment_info), .show = show_segments},
};

static struct node link_width = NUMBER(current_link_width, 4, 0);

static struct attribute* info_attributes[ARRAY_SIZE(nodes) + 1];
static struct attribute* device_attributes[] = {&link_width.attribute.attr, NULL};

static umode_t visible_mode(struct kobject* kobject, struct attribute* attribute, int index)
{
    const bool segments = strcmp(attribute->name, "segment_info") == 0;

    return segments && !reference_family()->segment_node ? 0 : attribute->mode;
}

static struct attribute_group info_group = {
    .attrs = info_attributes,
    .is_visible = visible_mode,
};
static const struct attribute_group device_group = {.attrs = device_attributes};

const struct attribute_group* reference_info_groups[] = {&info_group, &device_group, NULL};

void reference_info_prepare(void)
{
    size_t i;

    for (i = 0; i < ARRAY_SIZE(nodes); i++) {
        info_attributes[i] = &nodes[i].attribute.attr;
    }
    info_group.name = reference_family()->info_directory;
}
