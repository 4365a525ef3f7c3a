/* SPDX-License-Identifier: MIT */
/* Prints what libdrm lists, and what the driver behind each node says of itself. */
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>
#include <xf86drm.h>

enum { most_devices = 64 };

static void print_device(const drmDevice* device)
{
    if (device->bustype != DRM_BUS_PCI) {
        printf("bus type %d\n", device->bustype);
        return;
    }
    const drmPciBusInfo* place = device->businfo.pci;
    const drmPciDeviceInfo* identity = device->deviceinfo.pci;
    printf("pci %04x:%02x:%02x.%d %04x:%04x\n", place->domain, place->bus, place->dev, place->func,
           identity->vendor_id, identity->device_id);
}

static void print_node(const char* path)
{
    const int descriptor = open(path, O_RDWR);
    if (descriptor < 0) {
        printf("  %s: open: %s\n", path, strerror(errno));
        return;
    }
    drmVersion* version = drmGetVersion(descriptor);
    if (version == NULL) {
        printf("  %s: version: %s\n", path, strerror(errno));
    } else {
        printf("  %s: %s %d.%d.%d, %s, %s\n", path, version->name, version->version_major,
               version->version_minor, version->version_patchlevel, version->date, version->desc);
        drmFreeVersion(version);
    }
    close(descriptor);
}

int main(void)
{
    drmDevice* devices[most_devices];
    const int count = drmGetDevices2(0, devices, most_devices);
    printf("%d devices\n", count);
    for (int index = 0; index < count; ++index) {
        print_device(devices[index]);
        for (int type = 0; type < DRM_NODE_MAX; ++type) {
            if ((devices[index]->available_nodes & (1 << type)) != 0) {
                print_node(devices[index]->nodes[type]);
            }
        }
    }
    if (count > 0) {
        drmFreeDevices(devices, count);
    }
    return 0;
}
