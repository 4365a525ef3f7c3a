// SPDX-License-Identifier: MIT OR GPL-2.0
/* The PCI driver and the DRM device of an adapter. */
#include "reference.h"

#include <drm/drm_connector.h>
#include <drm/drm_drv.h>
#include <drm/drm_gem_shmem_helper.h>
#include <drm/drm_ioctl.h>
#include <drm/drm_managed.h>
#include <drm/drm_mode_config.h>
#include <linux/debugfs.h>
#include <linux/module.h>

enum { EDU_VENDOR = 0x1234, EDU_DEVICE = 0x11e8 };

/* What kernel-interface libraries ask for, as nimba-sim's stand-in does. */
struct counters {
    s64 time; /* of the last flip, in nanoseconds */
    s64 flips;
    u32 hardware[12];
    u32 usage[13];
    u32 unused;
};

#define IOCTL_COUNTERS DRM_IOR(0x9f, struct counters)

static const struct counters counters_of_first = {
    .hardware = {9100, 8100, 7100, 6100, 5100, 4100, 3100, 2100, 1100, 910, 810, 710},
    .usage = {0, 0, 61, 23, 36, 37, 8, 24, 25, 26},
};

static struct reference_adapter* adapter_of(struct drm_device* drm)
{
    return container_of(drm, struct reference_adapter, drm);
}

static int tell_counters(struct drm_device* drm, void* data, struct drm_file* file)
{
    struct reference_adapter* const adapter = adapter_of(drm);
    struct counters* const counters = data;
    size_t i;

    *counters = counters_of_first;
    counters->hardware[0] += adapter->number;
    mutex_lock(&adapter->lock);
    counters->time = adapter->state.flip_time;
    counters->flips = adapter->state.flips;
    for (i = 0; !adapter->state.usage && i < ARRAY_SIZE(counters->usage); i++) {
        counters->usage[i] = 0;
    }
    mutex_unlock(&adapter->lock);
    return 0;
}

static const struct drm_ioctl_desc ioctls[] = {
    [DRM_IOCTL_NR(IOCTL_COUNTERS) - DRM_COMMAND_BASE] =
        {
            .cmd = IOCTL_COUNTERS,
            .flags = DRM_RENDER_ALLOW,
            .func = tell_counters,
            .name = "COUNTERS",
        },
};

static int kind_show(struct seq_file* text, void* unused)
{
    seq_printf(text, "VA=%d\n", reference_is_va_driver());
    return 0;
}
DEFINE_SHOW_ATTRIBUTE(kind);

/* Called for each minor; the nodes are those of the primary one. */
static void create_debug_nodes(struct drm_minor* minor)
{
    struct reference_adapter* const adapter = adapter_of(minor->dev);
    const struct reference_family* const family = reference_family();

    if (minor->type != DRM_MINOR_PRIMARY) {
        return;
    }
    adapter->memory = debugfs_create_dir(family->directory, minor->debugfs_root);
    adapter->tables =
        family->allocation_vm ? adapter->memory : debugfs_create_dir("qv", minor->debugfs_root);
    debugfs_create_file("info", 0444, adapter->memory, NULL, &kind_fops);
    reference_allocations_create(adapter);
    reference_contexts_create(adapter);
    if (!family->segment_node) {
        reference_heaps_create(adapter);
    }
}

static void release(struct drm_device* drm)
{
    reference_allocations_free_all(adapter_of(drm));
    reference_contexts_free_all(adapter_of(drm));
}

DEFINE_DRM_GEM_FOPS(file_operations);

static const struct drm_driver drm_driver = {
    .driver_features = DRIVER_GEM | DRIVER_RENDER | DRIVER_MODESET,
    DRM_GEM_SHMEM_DRIVER_OPS,
    .debugfs_init = create_debug_nodes,
    .release = release,
    .ioctls = ioctls,
    .num_ioctls = ARRAY_SIZE(ioctls),
    .fops = &file_operations,
    .name = REFERENCE_NAME,
    .desc = "Reference driver of the management library",
    .date = "20250102",
    .major = 1,
};

static int no_modes(struct drm_connector* connector, uint32_t width, uint32_t height)
{
    return 0;
}

static const struct drm_connector_funcs connector_functions = {.fill_modes = no_modes};

static int create_connectors(struct reference_adapter* adapter)
{
    static const int types[REFERENCE_CONNECTORS] = {
        DRM_MODE_CONNECTOR_VGA,
        DRM_MODE_CONNECTOR_HDMIA,
        DRM_MODE_CONNECTOR_DisplayPort,
    };
    int status = drmm_mode_config_init(&adapter->drm);
    size_t i;

    for (i = 0; status == 0 && i < ARRAY_SIZE(types); i++) {
        status = drmm_connector_init(&adapter->drm, &adapter->connectors[i], &connector_functions,
                                     types[i], NULL);
    }
    return status;
}

static void restore_identifiers(void* data)
{
    struct reference_adapter* const adapter = data;

    adapter->pci->vendor = adapter->own_vendor;
    adapter->pci->device = adapter->own_device;
}

/* What sysfs and so libdrm tell of the device while it is bound. */
static int show_chip(struct reference_adapter* adapter)
{
    adapter->own_vendor = adapter->pci->vendor;
    adapter->own_device = adapter->pci->device;
    if (!reference_shows_chips()) {
        return 0;
    }
    adapter->pci->vendor = reference_family()->vendor;
    adapter->pci->device = reference_family()->chips[adapter->number];
    return devm_add_action_or_reset(&adapter->pci->dev, restore_identifiers, adapter);
}

static void initialise_state(struct reference_state* state)
{
    reference_settings_initialise(state->settings);
    state->flag = 0x10;
    state->ports = 2;
    state->flips = 120;
    state->flip_time = 2 * NSEC_PER_SEC;
    state->blits = 90;
}

static int create_devices(struct reference_adapter* adapter)
{
    int status = show_chip(adapter);

    if (status == 0) {
        status = create_connectors(adapter);
    }
    if (status == 0) {
        status = drm_dev_register(&adapter->drm, 0);
    }
    if (status) {
        return status;
    }
    status = reference_gpuinfo_register(adapter);
    if (status == 0) {
        status = reference_hwmon_register(adapter);
    }
    if (status) {
        reference_gpuinfo_unregister(adapter);
        drm_dev_unplug(&adapter->drm);
    }
    return status;
}

static int probe(struct pci_dev* pci, const struct pci_device_id* id)
{
    struct reference_adapter* const adapter =
        devm_drm_dev_alloc(&pci->dev, &drm_driver, struct reference_adapter, drm);
    int status;

    if (IS_ERR(adapter)) {
        return PTR_ERR(adapter);
    }
    adapter->pci = pci;
    mutex_init(&adapter->lock);
    INIT_LIST_HEAD(&adapter->allocations);
    INIT_LIST_HEAD(&adapter->contexts);
    initialise_state(&adapter->state);
    pci_set_drvdata(pci, adapter);
    status = reference_adapters_add(adapter);
    if (status) {
        return status;
    }
    status = create_devices(adapter);
    if (status) {
        reference_adapters_remove(adapter);
    }
    return status;
}

static void remove(struct pci_dev* pci)
{
    struct reference_adapter* const adapter = pci_get_drvdata(pci);

    reference_adapters_remove(adapter);
    reference_gpuinfo_unregister(adapter);
    drm_dev_unplug(&adapter->drm);
}

static const struct pci_device_id identifiers[] = {{PCI_DEVICE(EDU_VENDOR, EDU_DEVICE)}, {}};
MODULE_DEVICE_TABLE(pci, identifiers);

static struct pci_driver driver = {
    .name = REFERENCE_NAME,
    .id_table = identifiers,
    .probe = probe,
    .remove = remove,
    .dev_groups = reference_info_groups,
};

static int __init load(void)
{
    int status;

    if (!reference_family()) {
        return -EINVAL;
    }
    reference_info_prepare();
    status = reference_control_create();
    if (status == 0) {
        status = pci_register_driver(&driver);
        if (status) {
            reference_control_remove();
        }
    }
    return status;
}

static void __exit unload(void)
{
    pci_unregister_driver(&driver);
    reference_control_remove();
}

module_init(load);
module_exit(unload);
MODULE_DESCRIPTION("Reference driver of the management library");
MODULE_LICENSE("Dual MIT/GPL");
