// SPDX-License-Identifier: MIT
// Discovery: a pass over the DRM devices for the product's adapters, and one for a GPU of another
// vendor.
#include "core/adapter_sysfs.hpp"
#include "core/chip_table.hpp"
#include "core/drm_library.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

// Written by discovery alone, slot by slot; nothing resets it.
find_adapter_ext1 find_adapter_ext1_cache{};

// Written by gfx_find_adapter alone.
uint8_t gpuinfo_control_enable = 0;

namespace nimba {
namespace {

constexpr uint32_t kAnyVendor = 0xFFFF;
constexpr int kForeignSlot = 2;

// No more devices than there are slots are examined, whatever they are.
std::span<const drmDevicePtr> examined(const DrmDevices& devices)
{
    return std::span{devices.entries()}.first(
        std::min<std::size_t>(devices.entries().size(), MAX_CHIP_NUM));
}

void warn_of_unexamined(const DrmDevices& devices)
{
    if (devices.entries().size() > MAX_CHIP_NUM) {
        std::puts("exceed  MAX_CHIP_NUM. ");
    }
}

const drmPciDeviceInfo* pci_identity(const drmDevice& device)
{
    return device.bustype == DRM_BUS_PCI ? device.deviceinfo.pci : nullptr;
}

void write_name(find_adapter_header& header, int slot, const char* name)
{
    std::snprintf(header.chip_name[slot], sizeof header.chip_name[slot], "Gpu%d:%s", slot, name);
}

// The card number comes from the primary node's path, also when another node was opened.
void read_card_number(const drmDevice& device, int32_t& card)
{
    if (const char* path = device.nodes[DRM_NODE_PRIMARY]) {
        std::sscanf(path, "/dev/dri/card%d", &card);
    }
}

void record_location(int slot, const drmPciBusInfo& location)
{
    find_adapter_ext1_cache.busid_info[slot] = {.domain = location.domain,
                                                .bus = location.bus,
                                                .device = location.dev,
                                                .function = location.func,
                                                .reserved = 0};
    lib_print_func("gpu_busid: 0x%04x:%02x:%02x.%x\n", location.domain, location.bus, location.dev,
                   location.func);

    const gfx_luid luid{.low = location.domain,
                        .high = location.bus * 65536U + location.dev * 256U + location.func};
    find_adapter_ext1_cache.luid[slot] = luid;
    lib_print_func("gpu_luid: 0x%08x:0x%08x\n", luid.low, luid.high);
}

void open_sysfs(find_adapter& rec, int slot, const drmPciBusInfo& location,
                const ChipFamily& family)
{
    gpu_infos& infos = rec.gpu_infos[slot];
    std::snprintf(infos.busid, sizeof infos.busid - 1, "%04x:%02x:%02x.%d", location.domain,
                  location.bus, location.dev, location.func);
    infos.vendor_id = static_cast<uint16_t>(family.vendor_id);
    open_sysfs_directories(infos, family);
}

void fill_slot(find_adapter& rec, int slot, const drmDevice& device, Descriptor node,
               const Chip& chip, const ChipFamily& family)
{
    find_adapter_header& header = rec.header;
    header.chip_id[slot] = chip.device_id;
    write_name(header, slot, chip.name);
    lib_print_func("%s", chip.found_message);
    header.drm_fd[slot] = node.release();

    read_card_number(device, header.drm_card_idx[slot]);
    lib_print_func("drm_card_idx: %d\n", header.drm_card_idx[slot]);
    record_location(slot, *device.businfo.pci);
    open_sysfs(rec, slot, *device.businfo.pci, family);

    if (is_va_driver(header.drm_card_idx[slot], family)) {
        header.IS_VA_driver[slot] = 1;
    }
    lib_print_func("find_adapter->header.IS_VA_driver[%d] = %d\n", slot, header.IS_VA_driver[slot]);
}

// Examines one device; a recognised adapter takes the next slot and keeps its descriptor open.
void examine_product_device(find_adapter& rec, const drmDevice& device)
{
    const drmPciDeviceInfo* identity = pci_identity(device);
    const ChipFamily* family = identity != nullptr ? find_family(identity->vendor_id) : nullptr;
    if (family == nullptr) {
        return;
    }
    Descriptor node = open_drm_node(device);
    if (!node) {
        return;
    }
    lib_print_func("check venderid: 0x%x, device id:0x%x\n", identity->vendor_id,
                   identity->device_id);

    find_adapter_header& header = rec.header;
    if (header.vendor_id_filter != kAnyVendor && header.vendor_id_filter != identity->vendor_id) {
        return;
    }
    const int slot = header.chip_num;
    find_adapter_ext1_cache.vendor_id[slot] = identity->vendor_id;
    const Chip* chip = find_chip(identity->vendor_id, identity->device_id);
    if (chip == nullptr) {
        // The slot keeps the number of a closed descriptor until a chip takes it; so does the
        // cache the vendor.
        header.drm_fd[slot] = node.get();
        return;
    }
    fill_slot(rec, slot, device, std::move(node), *chip, *family);
    ++header.chip_num;
}

void find_product_adapters(find_adapter& rec, const DrmDevices& devices)
{
    for (const drmDevicePtr device : examined(devices)) {
        examine_product_device(rec, *device);
    }
    warn_of_unexamined(devices);
}

// The slot's number, name and card may replace those of a third adapter: hosts rely on finding the
// other vendor's GPU there.
void fill_foreign_slot(find_adapter_header& header, const drmDevice& device)
{
    const drmPciDeviceInfo& identity = *device.deviceinfo.pci;
    find_adapter_ext1_cache.vendor_id[kForeignSlot] = identity.vendor_id;
    header.chip_id[kForeignSlot] = identity.device_id;
    if (const ForeignVendor* vendor = find_foreign_vendor(identity.vendor_id)) {
        write_name(header, kForeignSlot, vendor->name);
        lib_print_func("%s", vendor->found_message);
    } else {
        write_name(header, kForeignSlot, "Unknown-GPU");
        lib_print_func("find chip unknown, verdor i:0x%x, device id 0x%x\n", identity.vendor_id,
                       identity.device_id);
    }
    read_card_number(device, header.drm_card_idx[kForeignSlot]);
    record_location(kForeignSlot, *device.businfo.pci);
    find_adapter_ext1_cache.other_vendor_chip_num = 1;
}

// Takes the first GPU of another vendor that tells its version. Returns whether there was one.
bool take_foreign_gpu(find_adapter_header& header, const DrmDevices& devices)
{
    for (const drmDevicePtr device : examined(devices)) {
        const drmPciDeviceInfo* identity = pci_identity(*device);
        if (identity == nullptr || find_family(identity->vendor_id) != nullptr) {
            continue;
        }
        Descriptor node = open_drm_node(*device);
        if (node) {
            // Neither stored nor closed: the other GPU stays in use for the life of the process.
            (void)node.release();
            fill_foreign_slot(header, *device);
            return true;
        }
    }
    return false;
}

void find_foreign_gpu(find_adapter_header& header, const DrmDevices& devices)
{
    if (!take_foreign_gpu(header, devices)) {
        warn_of_unexamined(devices);
    }
    lib_print_func("find chip num:%d, other vendor chip num:%d\n", header.chip_num,
                   find_adapter_ext1_cache.other_vendor_chip_num);
}

}  // namespace
}  // namespace nimba

int32_t gpuinfo_nimba_get_device_handles(find_adapter* rec)
{
    rec->header.chip_num = 0;
    const nimba::DrmDevices devices = nimba::DrmDevices::list();
    if (devices.entries().empty()) {
        return 0;
    }
    nimba::find_product_adapters(*rec, devices);
    nimba::find_foreign_gpu(rec->header, devices);
    return 1;
}

int32_t gfx_find_adapter(find_adapter* rec)
{
    gpuinfo_control_enable = 0;
    if (gpuinfo_nimba_init() != 0) {
        gpuinfo_control_enable = static_cast<uint8_t>(gpuinfo_nimba_get_device_handles(rec));
    }
    return 0;
}

int32_t gfx_find_adapter_ext1(find_adapter_ext1* rec)
{
    *rec = find_adapter_ext1_cache;
    return 0;
}
