// SPDX-License-Identifier: MIT OR GPL-2.0
/* <debug directory>/heaps/<heap>/info. */
#include "reference.h"

#include <linux/debugfs.h>

static const char* const names[REFERENCE_SEGMENTS] = {
    "heap_invalid",
    "heap_local",
    "heap_pcie_unsnoop",
    "heap_pcie_snoop",
};

static int heap_show(struct seq_file* text, void* unused)
{
    const struct reference_segment* const segment = text->private;

    seq_printf(text, "Total segment size:  %llu\nKMD used segment memory:  %llu\n", segment->total,
               segment->used);
    return 0;
}
DEFINE_SHOW_ATTRIBUTE(heap);

void reference_heaps_create(struct reference_adapter* adapter)
{
    struct dentry* const heaps = debugfs_create_dir("heaps", adapter->memory);
    size_t i;

    for (i = 0; i < ARRAY_SIZE(names); i++) {
        debugfs_create_file("info", 0444, debugfs_create_dir(names[i], heaps),
                            (void*)&reference_family()->segments[i], &heap_fops);
    }
}
