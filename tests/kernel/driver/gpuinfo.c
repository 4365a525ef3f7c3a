// SPDX-License-Identifier: MIT OR GPL-2.0
/* /proc/gpuinfo_<card>. */
#include "reference.h"

#include <linux/proc_fs.h>

static const char before_displays[] =
    "Driver Version : 2.1b.3c\n"
    "Firmware Version : 4.d.5.e6\n"
    "Firmware Name : Reference adapter\n"
    "Bus Type : PCIE3.0 x4\n";

static const char behind_displays[] =
    "Pixel Fillrate : 7200\n"
    "Texture Fillrate : 14400\n"
    "Memory Clock Freq : 935\n"
    "HDMI Max Display Resolution : 2560 x 1440@75\n"
    "DP Max Display Resolution : 5120 x 2880@30\n"
    "VGA Max Display Resolution : 1600 x 1200@85\n";

/* The first adapter's; the others have 1 more each. */
static const struct {
    const char* key;
    unsigned int value;
} rates[] = {
    {"GPU Memory Usage", 21},  {"GPU Use Rate(3d)", 31},     {"GPU Use Rate(video)", 41},
    {"GPU Use Rate(vpp)", 51}, {"Realtime Temperature", 61},
};

static int gpuinfo_show(struct seq_file* text, void* unused)
{
    struct reference_adapter* const adapter = text->private;
    unsigned int ports;
    size_t i;

    mutex_lock(&adapter->lock);
    ports = adapter->state.ports;
    mutex_unlock(&adapter->lock);
    seq_printf(text, "Device ID : %x\n", adapter->pci->device);
    seq_puts(text, before_displays);
    if (ports > 0) {
        seq_printf(text, "Max Display Port : %x\nSupport Display Type : HDMI DP\n", ports);
    }
    seq_puts(text, behind_displays);
    for (i = 0; i < ARRAY_SIZE(rates); i++) {
        seq_printf(text, "%s : %u\n", rates[i].key, rates[i].value + adapter->number);
    }
    return 0;
}

int reference_gpuinfo_register(struct reference_adapter* adapter)
{
    char name[24];

    snprintf(name, sizeof(name), "gpuinfo_%d", adapter->drm.primary->index);
    adapter->proc = proc_create_single_data(name, 0444, NULL, gpuinfo_show, adapter);
    return adapter->proc ? 0 : -ENOMEM;
}

/* Waits for who reads it. */
void reference_gpuinfo_unregister(struct reference_adapter* adapter)
{
    proc_remove(adapter->proc);
}
