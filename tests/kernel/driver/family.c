// SPDX-License-Identifier: MIT OR GPL-2.0
/* The two families of chips, and the parameters that choose what the driver shows. */
#include "reference.h"

#include <linux/module.h>
#include <linux/sizes.h>
#include <linux/string.h>

static char* family = "nimba";
module_param(family, charp, 0444);
MODULE_PARM_DESC(family, "family of chips: nimba or qv");

static bool va = true;
module_param(va, bool, 0444);
MODULE_PARM_DESC(va, "show the nodes of a VA driver");

static bool chips = true;
module_param(chips, bool, 0444);
MODULE_PARM_DESC(chips, "show the family's PCI identifiers instead of the device's own");

static const struct reference_family families[] = {
    {
        .name = "nimba",
        .vendor = 0x4e4d,
        .chips = {0x1001, 0x1002, 0x1005},
        .directory = "jw",
        .info_directory = "jw_info",
        .segment_node = true,
        .allocation_vm = false,
        .segments = {{4294967000ULL, 272896000}, {2147483000, 33636000}, {0, 0}, {0, 0}},
    },
    {
        .name = "qv",
        .vendor = 0x5156,
        .chips = {0x2030, 0x2020, 0x2040},
        .directory = "qv",
        .info_directory = "qv_info",
        .segment_node = false,
        .allocation_vm = true,
        .segments = {{0, 0}, {2 * (u64)SZ_1G, 256 * SZ_1M}, {SZ_1G, 64 * SZ_1M}, {SZ_512M, SZ_32M}},
    },
};

const struct reference_family* reference_family(void)
{
    size_t i;

    for (i = 0; i < ARRAY_SIZE(families); i++) {
        if (strcmp(families[i].name, family) == 0) {
            return &families[i];
        }
    }
    return NULL;
}

bool reference_is_va_driver(void)
{
    return va;
}

bool reference_shows_chips(void)
{
    return chips;
}
