// SPDX-License-Identifier: MIT OR GPL-2.0
/* Allocations of video memory: <debug directory>/allocations/<handle>/info and the nodes of the
 * address spaces that map them. */
#include "reference.h"

#include <linux/debugfs.h>
#include <linux/slab.h>

enum {
    HANDLE,
    DEVICE,
    SIZE = 7,
    ADDRESS = 17,
    SHOWN = 21, /* keys from here on are not lines of the node */
    PID = SHOWN,
    KEYS
};

/* In the order of the node's lines. */
static const struct reference_key keys[KEYS] = {
    {"handle", 0},        {"device", 1},
    {"width", 256},       {"height", 256},
    {"pitch", 1024},      {"bit_cnt", 32},
    {"secured", 0},       {"size", 262144},
    {"tile", 1},          {"cpu_visible", 0},
    {"cache_type", 2},    {"pool_type", 3},
    {"at_type", 4},       {"segmentid", 0},
    {"hw_format", 5},     {"compress_format", 6},
    {"bl_slot_index", 7}, {"gpu_virt_addr", 0x100000000},
    {"imported", 8},      {"fb_offset", 0x1000},
    {"share", 9},         {"pid", 1},
};

/* What every adapter has in the beginning. */
static const char* const initial[] = {
    "handle=0xa1 device=1 width=1920 height=1080 pitch=7680 size=8294400 gpu_virt_addr=0x100000000",
    "handle=0xa2 device=1 segmentid=1 gpu_virt_addr=0x110000000",
    "handle=0x1b3 device=16 segmentid=1 width=64 height=64 pitch=256 size=16384 "
    "gpu_virt_addr=0x120000000 pid=2",
};

struct allocation {
    struct list_head entry;
    struct dentry* directory;
    struct dentry* vm_directory;
    s64 numbers[KEYS]; /* never change while the nodes are there */
};

static const char* line_format(size_t key)
{
    if (key == HANDLE || (key == DEVICE && !reference_is_va_driver())) {
        return "%s=%llx\n";
    }
    return "%s=%lld\n";
}

static int info_show(struct seq_file* text, void* unused)
{
    const struct allocation* const allocation = text->private;
    size_t i;

    for (i = 0; i < SHOWN; i++) {
        seq_printf(text, line_format(i), keys[i].name, allocation->numbers[i]);
    }
    return 0;
}
DEFINE_SHOW_ATTRIBUTE(info);

static int vm_info_show(struct seq_file* text, void* unused)
{
    const struct allocation* const allocation = text->private;

    if (allocation->numbers[PID] != 0) {
        seq_printf(text,
                   "=====vm node info=====\ndevice_pid = %lld\ndevice_pname = pid%lld\n"
                   "gpu_va = %llx\nsize = %llx\n",
                   allocation->numbers[PID], allocation->numbers[PID], allocation->numbers[ADDRESS],
                   allocation->numbers[SIZE]);
    }
    return 0;
}
DEFINE_SHOW_ATTRIBUTE(vm_info);

static struct dentry* allocations_of(struct dentry* directory)
{
    return debugfs_lookup("allocations", directory);
}

static struct dentry* create_directory(struct dentry* parent, const struct allocation* allocation)
{
    struct dentry* const listing = allocations_of(parent);
    struct dentry* directory;
    char name[20];

    snprintf(name, sizeof(name), "%llx", allocation->numbers[HANDLE]);
    directory = debugfs_create_dir(name, listing);
    dput(listing);
    return directory;
}

static void create_nodes(struct reference_adapter* adapter, struct allocation* allocation)
{
    allocation->directory = create_directory(adapter->memory, allocation);
    debugfs_create_file("info", 0444, allocation->directory, allocation, &info_fops);
    if (adapter->tables != adapter->memory) {
        allocation->vm_directory = create_directory(adapter->tables, allocation);
    }
    debugfs_create_file("vm_info", 0444, allocation->vm_directory ?: allocation->directory,
                        allocation, &vm_info_fops);
}

/* Waits for who reads the nodes. */
static void free_allocation(struct allocation* allocation)
{
    debugfs_remove(allocation->vm_directory);
    debugfs_remove(allocation->directory);
    list_del(&allocation->entry);
    kfree(allocation);
}

static struct allocation* find(struct reference_adapter* adapter, s64 handle)
{
    struct allocation* allocation;

    list_for_each_entry(allocation, &adapter->allocations, entry)
    {
        if (allocation->numbers[HANDLE] == handle) {
            return allocation;
        }
    }
    return NULL;
}

int reference_allocation_add(struct reference_adapter* adapter, char* words)
{
    struct allocation* const allocation = kzalloc(sizeof(*allocation), GFP_KERNEL);

    if (!allocation) {
        return -ENOMEM;
    }
    reference_numbers_initialise(keys, KEYS, allocation->numbers);
    if (reference_numbers_parse(keys, KEYS, words, allocation->numbers) ||
        find(adapter, allocation->numbers[HANDLE])) {
        kfree(allocation);
        return -EINVAL;
    }
    list_add_tail(&allocation->entry, &adapter->allocations);
    create_nodes(adapter, allocation);
    return 0;
}

int reference_allocation_remove(struct reference_adapter* adapter, char* words)
{
    s64 numbers[KEYS] = {};
    struct allocation* allocation;

    if (reference_numbers_parse(keys, KEYS, words, numbers)) {
        return -EINVAL;
    }
    allocation = find(adapter, numbers[HANDLE]);
    if (!allocation) {
        return -ENOENT;
    }
    free_allocation(allocation);
    return 0;
}

void reference_allocations_create(struct reference_adapter* adapter)
{
    size_t i;

    debugfs_create_dir("allocations", adapter->memory);
    if (adapter->tables != adapter->memory) {
        debugfs_create_dir("allocations", adapter->tables);
    }
    for (i = 0; i < ARRAY_SIZE(initial); i++) {
        char* const words = kstrdup(initial[i], GFP_KERNEL);

        if (!words || reference_allocation_add(adapter, words)) {
            dev_err(adapter->drm.dev, "no allocation \"%s\"\n", initial[i]);
        }
        kfree(words);
    }
}

void reference_allocations_free_all(struct reference_adapter* adapter)
{
    struct allocation* allocation;
    struct allocation* next;

    list_for_each_entry_safe(allocation, next, &adapter->allocations, entry)
    {
        list_del(&allocation->entry);
        kfree(allocation);
    }
}
