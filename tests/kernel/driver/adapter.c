// SPDX-License-Identifier: MIT OR GPL-2.0
/* The adapters that are bound, by number. */
#include "reference.h"

static DEFINE_MUTEX(adapters_lock);
static LIST_HEAD(adapters);

static struct reference_adapter* find(unsigned int number)
{
    struct reference_adapter* adapter;

    list_for_each_entry(adapter, &adapters, entry)
    {
        if (adapter->number == number) {
            return adapter;
        }
    }
    return NULL;
}

int reference_adapters_add(struct reference_adapter* adapter)
{
    unsigned int number = 0;
    int status = 0;

    mutex_lock(&adapters_lock);
    while (number < REFERENCE_ADAPTERS && find(number)) {
        number++;
    }
    if (number == REFERENCE_ADAPTERS) {
        status = -ENOSPC;
    } else {
        adapter->number = number;
        list_add_tail(&adapter->entry, &adapters);
    }
    mutex_unlock(&adapters_lock);
    return status;
}

void reference_adapters_remove(struct reference_adapter* adapter)
{
    mutex_lock(&adapters_lock);
    list_del(&adapter->entry);
    mutex_unlock(&adapters_lock);
}

struct reference_adapter* reference_adapters_find(unsigned int number)
{
    struct reference_adapter* adapter;

    mutex_lock(&adapters_lock);
    adapter = find(number);
    if (!adapter) {
        mutex_unlock(&adapters_lock);
    }
    return adapter;
}

void reference_adapters_release(void)
{
    mutex_unlock(&adapters_lock);
}

void reference_adapters_show(struct seq_file* text)
{
    struct reference_adapter* adapter;

    mutex_lock(&adapters_lock);
    list_for_each_entry(adapter, &adapters, entry)
    {
        mutex_lock(&adapter->lock);
        seq_printf(text, "adapter=%u bus=%s card=%d accepted=%u rejected=%u\n", adapter->number,
                   pci_name(adapter->pci), adapter->drm.primary->index, adapter->state.accepted,
                   adapter->state.rejected);
        mutex_unlock(&adapter->lock);
    }
    mutex_unlock(&adapters_lock);
}

void reference_count_write(struct reference_adapter* adapter, bool accepted)
{
    mutex_lock(&adapter->lock);
    if (accepted) {
        adapter->state.accepted++;
    } else {
        adapter->state.rejected++;
    }
    mutex_unlock(&adapter->lock);
}
