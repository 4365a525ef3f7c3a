// SPDX-License-Identifier: MIT OR GPL-2.0
/* Device contexts: <debug directory>/devices/<entry>/info, and the same with the dump of its page
 * tables where those are. */
#include "reference.h"

#include <linux/debugfs.h>
#include <linux/slab.h>

enum { HANDLE, PID, TABLES, PAGES, KEYS };

static const struct reference_key keys[KEYS] = {
    {"handle", 0},
    {"pid", 0},
    {"tables", 1},
    {"pages", 1},
};

/* What every adapter has in the beginning: the first process, a kernel thread, and the device that
 * belongs to none. */
static const char* const initial[] = {
    "handle=1 pid=1 tables=4 pages=32",
    "handle=16 pid=2 tables=2 pages=3",
    "handle=0x2000000 pid=0",
};

struct context {
    struct list_head entry;
    struct reference_page_tables tables;
    struct dentry* directory;
    struct dentry* vm_directory;
    s64 numbers[KEYS]; /* never change while the nodes are there */
};

static int info_show(struct seq_file* text, void* unused)
{
    const struct context* const context = text->private;

    seq_printf(text, "pid = %lld\nhandle = %llx\n", context->numbers[PID],
               context->numbers[HANDLE]);
    return 0;
}
DEFINE_SHOW_ATTRIBUTE(info);

static struct dentry* create_directory(struct dentry* parent, const char* name)
{
    struct dentry* const listing = debugfs_lookup("devices", parent);
    struct dentry* const directory = debugfs_create_dir(name, listing);

    dput(listing);
    return directory;
}

static void create_nodes(struct reference_adapter* adapter, struct context* context)
{
    struct dentry* vm_directory;
    char name[20];

    snprintf(name, sizeof(name), "%08llx", context->numbers[HANDLE]);
    context->directory = create_directory(adapter->memory, name);
    debugfs_create_file(reference_is_va_driver() ? "info" : name, 0444, context->directory, context,
                        &info_fops);
    vm_directory = context->directory;
    if (adapter->tables != adapter->memory) {
        context->vm_directory = create_directory(adapter->tables, name);
        vm_directory = context->vm_directory;
    }
    if (vm_directory != context->directory || !reference_is_va_driver()) {
        debugfs_create_file("info", 0444, vm_directory, context, &info_fops);
    }
    context->tables.tables = context->numbers[TABLES];
    context->tables.pages = context->numbers[PAGES];
    debugfs_create_file("vm_info", 0444, vm_directory, &context->tables,
                        &reference_page_tables_fops);
}

/* Waits for who reads the nodes. */
static void free_context(struct context* context)
{
    debugfs_remove(context->vm_directory);
    debugfs_remove(context->directory);
    list_del(&context->entry);
    kfree(context);
}

static struct context* find(struct reference_adapter* adapter, s64 handle)
{
    struct context* context;

    list_for_each_entry(context, &adapter->contexts, entry)
    {
        if (context->numbers[HANDLE] == handle) {
            return context;
        }
    }
    return NULL;
}

int reference_context_add(struct reference_adapter* adapter, char* words)
{
    struct context* const context = kzalloc(sizeof(*context), GFP_KERNEL);

    if (!context) {
        return -ENOMEM;
    }
    reference_numbers_initialise(keys, KEYS, context->numbers);
    if (reference_numbers_parse(keys, KEYS, words, context->numbers) ||
        find(adapter, context->numbers[HANDLE])) {
        kfree(context);
        return -EINVAL;
    }
    list_add_tail(&context->entry, &adapter->contexts);
    create_nodes(adapter, context);
    return 0;
}

int reference_context_remove(struct reference_adapter* adapter, char* words)
{
    s64 numbers[KEYS] = {};
    struct context* context;

    if (reference_numbers_parse(keys, KEYS, words, numbers)) {
        return -EINVAL;
    }
    context = find(adapter, numbers[HANDLE]);
    if (!context) {
        return -ENOENT;
    }
    free_context(context);
    return 0;
}

void reference_contexts_create(struct reference_adapter* adapter)
{
    size_t i;

    debugfs_create_dir("devices", adapter->memory);
    if (adapter->tables != adapter->memory) {
        debugfs_create_dir("devices", adapter->tables);
    }
    for (i = 0; i < ARRAY_SIZE(initial); i++) {
        char* const words = kstrdup(initial[i], GFP_KERNEL);

        if (!words || reference_context_add(adapter, words)) {
            dev_err(adapter->drm.dev, "no context \"%s\"\n", initial[i]);
        }
        kfree(words);
    }
}

void reference_contexts_free_all(struct reference_adapter* adapter)
{
    struct context* context;
    struct context* next;

    list_for_each_entry_safe(context, next, &adapter->contexts, entry)
    {
        list_del(&context->entry);
        kfree(context);
    }
}
