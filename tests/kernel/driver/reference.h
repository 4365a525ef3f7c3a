/* SPDX-License-Identifier: MIT OR GPL-2.0 */
/*
 * A reference driver: publishes every node that the management library reads, for each `edu` device
 * of the virtual machine, with texts that tables define. It drives no hardware.
 */
#ifndef NIMBA_REFERENCE_H
#define NIMBA_REFERENCE_H

#include <drm/drm_connector.h>
#include <drm/drm_device.h>
#include <drm/drm_file.h>
#include <linux/list.h>
#include <linux/mutex.h>
#include <linux/pci.h>
#include <linux/seq_file.h>

#define REFERENCE_NAME "nimba_reference"
#define REFERENCE_ADAPTERS 3
#define REFERENCE_CONNECTORS 3
#define REFERENCE_SEGMENTS 4
#define REFERENCE_SETTINGS 23

struct reference_segment {
    u64 total; /* bytes */
    u64 used;  /* bytes, without what allocations use */
};

struct reference_family {
    const char* name;
    u16 vendor;
    u16 chips[REFERENCE_ADAPTERS]; /* PCI device identifiers of the adapters */
    const char* directory;         /* below the primary minor's in debugfs */
    const char* info_directory;
    bool segment_node;  /* segments are told by segment_info, else by heaps */
    bool allocation_vm; /* the nodes of page tables stand in the same directory */
    struct reference_segment segments[REFERENCE_SEGMENTS];
};

/* Numbers that commands change. */
struct reference_state {
    u32 settings[REFERENCE_SETTINGS];
    bool usage; /* whether the use of the engines is accounted for */
    bool perf;
    u32 flag;
    u32 ports; /* 0: the /proc file tells nothing of displays */
    u32 flips;
    u64 flip_time; /* nanoseconds */
    u64 blits;
    u32 accepted; /* writes to nodes */
    u32 rejected;
};

/* Lives as long as anybody has a DRM node of it open. Nodes are removed before it is unbound, when
 * no reader of them is left. */
struct reference_adapter {
    struct drm_device drm;
    struct list_head entry; /* in the list of adapters */
    struct pci_dev* pci;
    unsigned int number; /* lowest that was free */
    u16 own_vendor;
    u16 own_device;
    struct drm_connector connectors[REFERENCE_CONNECTORS];
    struct dentry* memory;       /* the debug directory */
    struct dentry* tables;       /* that of page tables; may be the same */
    struct proc_dir_entry* proc; /* /proc/gpuinfo_<card> */
    struct mutex lock;           /* of what follows */
    struct reference_state state;
    struct list_head allocations;
    struct list_head contexts;
};

/* family.c: what the module parameters chose. */
const struct reference_family* reference_family(void);
bool reference_is_va_driver(void);
bool reference_shows_chips(void); /* else the device's own identifiers */

/* adapter.c: the adapters that are bound. The lock is held from adapters_find, which returns null
 * without such an adapter, to adapters_release. */
int reference_adapters_add(struct reference_adapter* adapter);
void reference_adapters_remove(struct reference_adapter* adapter);
struct reference_adapter* reference_adapters_find(unsigned int number);
void reference_adapters_release(void);
void reference_adapters_show(struct seq_file* text);

/* Whether what was written is one command: counts it. */
void reference_count_write(struct reference_adapter* adapter, bool accepted);

/* command.c: the words "key=number" of a command, by a table of keys; numbers as C writes them.
 * Returns 0, or -EINVAL for a word that is none of these. */
struct reference_key {
    const char* name;
    s64 initial;
};
void reference_numbers_initialise(const struct reference_key* keys, size_t count, s64* numbers);
int reference_numbers_parse(const struct reference_key* keys, size_t count, char* words,
                            s64* numbers);

/* The nodes. */
void reference_info_prepare(void);
extern const struct attribute_group* reference_info_groups[];
int reference_hwmon_register(struct reference_adapter* adapter);
int reference_gpuinfo_register(struct reference_adapter* adapter);
void reference_gpuinfo_unregister(struct reference_adapter* adapter);
void reference_heaps_create(struct reference_adapter* adapter);

void reference_allocations_create(struct reference_adapter* adapter);
void reference_allocations_free_all(struct reference_adapter* adapter);
int reference_allocation_add(struct reference_adapter* adapter, char* words);
int reference_allocation_remove(struct reference_adapter* adapter, char* words);

void reference_contexts_create(struct reference_adapter* adapter);
void reference_contexts_free_all(struct reference_adapter* adapter);
int reference_context_add(struct reference_adapter* adapter, char* words);
int reference_context_remove(struct reference_adapter* adapter, char* words);

/* page_tables.c: the dump of so many tables of level 2 with so many pages each, which are the
 * node's data. */
struct reference_page_tables {
    unsigned long tables;
    unsigned long pages;
};
extern const struct file_operations reference_page_tables_fops;

/* settings.c */
void reference_settings_initialise(u32* settings);
ssize_t reference_setting_show(const u32* settings, const char* node, char* text);
/* Takes one command. Returns 0, or -EINVAL, with nothing changed. */
int reference_setting_store(u32* settings, const char* node, const char* command);

/* control.c */
int reference_control_create(void);
void reference_control_remove(void);

#endif
