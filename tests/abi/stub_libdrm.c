/* SPDX-License-Identifier: MIT */
/* A libdrm of three PCI devices: two product adapters and a GPU of another vendor. Their nodes are
 * /dev/null, which everybody can open; their PCI locations are none that a machine has. */
#include <nimba_mgmt_interface.h>
#include <stdlib.h>
#include <xf86drm.h>

enum { kDevices = 3 };

static char render_node[] = "/dev/null";
static char primary_nodes[kDevices][20] = {"/dev/dri/card5", "/dev/dri/card12", "/dev/dri/card33"};
static char* nodes[kDevices][DRM_NODE_MAX];
static drmPciBusInfo locations[kDevices] = {
    {.domain = 0x1234, .bus = 0x56, .dev = 0x1A, .func = 7},
    {.domain = 0xFFFE, .bus = 0xFD, .dev = 0x02, .func = 0},
    {.domain = 0x0003, .bus = 0xAB, .dev = 0x1F, .func = 6},
};
static drmPciDeviceInfo identities[kDevices] = {
    {.vendor_id = NIMBA_VENDOR_ID, .device_id = DEVICE_ID_NIMBA_K1},
    {.vendor_id = QV_VENDOR_ID, .device_id = DEVICE_ID_QV_M30},
    {.vendor_id = 0x10DE, .device_id = 0x2204},
};
static drmDevice devices[kDevices];
static drmVersion version;

int drmGetDevices2(uint32_t flags, drmDevicePtr list[], int size)
{
    (void)flags;
    for (int index = 0; list != NULL && index < size && index < kDevices; ++index) {
        nodes[index][DRM_NODE_PRIMARY] = primary_nodes[index];
        nodes[index][DRM_NODE_RENDER] = render_node;
        devices[index] = (drmDevice){
            .nodes = nodes[index],
            .available_nodes = 1 << DRM_NODE_PRIMARY | 1 << DRM_NODE_RENDER,
            .bustype = DRM_BUS_PCI,
            .businfo.pci = &locations[index],
            .deviceinfo.pci = &identities[index],
        };
        list[index] = &devices[index];
    }
    return kDevices;
}

void drmFreeDevices(drmDevicePtr list[], int count)
{
    for (int index = 0; index < count; ++index) {
        list[index] = NULL;
    }
}

drmVersionPtr drmGetVersion(int fd)
{
    return fd >= 0 ? &version : NULL;
}

void drmFreeVersion(drmVersionPtr freed)
{
    if (freed != &version) {
        abort();
    }
}
