// SPDX-License-Identifier: MIT
#include "tools/smi/worker/discovery.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace nimba::smi {
namespace {

constexpr int kForeignSlot = 2;

template <std::size_t Size>
std::string bounded(const char (&text)[Size])
{
    return {text, ::strnlen(text, Size)};
}

Luid luid_in(const DiscoveryRecords& records, int slot)
{
    const gfx_luid& luid = records.identity.luid[slot];
    return {luid.low, luid.high};
}

// The card of an adapter without a primary node is not filled.
std::optional<int> card_in_slot(const DiscoveryRecords& records, int slot)
{
    const int card = records.adapters.header.drm_card_idx[slot];
    return card < 0 ? std::nullopt : std::optional(card);
}

std::string bus_id_text(const busid_info& location)
{
    return fmt::format("{:04x}:{:02x}:{:02x}.{}", location.domain, location.bus, location.device,
                       location.function);
}

std::optional<std::string> name_in_slot(const DiscoveryRecords& records, int slot)
{
    if (is_overwritten(records, slot)) {
        return std::nullopt;
    }
    return bounded(records.adapters.header.chip_name[slot]);
}

}  // namespace

find_adapter unfilled_adapters()
{
    find_adapter adapters{};
    adapters.header.vendor_id_filter = 0xFFFF;
    std::ranges::fill(adapters.header.drm_card_idx, -1);
    for (gpu_infos& infos : adapters.gpu_infos) {
        infos.jw_info_dir_fd = -1;
        infos.hwmon_dir_fd = -1;
    }
    return adapters;
}

int slot_count(const DiscoveryRecords& records)
{
    return std::clamp(records.adapters.header.chip_num, 0, MAX_CHIP_NUM);
}

std::vector<SlotIdentity> slot_identities(const DiscoveryRecords& records)
{
    std::vector<SlotIdentity> slots;
    slots.reserve(MAX_CHIP_NUM);
    for (int slot = 0; slot < slot_count(records); ++slot) {
        slots.push_back(
            {slot, bounded(records.adapters.gpu_infos[slot].busid), name_in_slot(records, slot)});
    }
    return slots;
}

std::optional<ForeignGpu> foreign_gpu(const DiscoveryRecords& records)
{
    if (records.identity.other_vendor_chip_num != 1) {
        return std::nullopt;
    }
    const find_adapter_header& header = records.adapters.header;
    return ForeignGpu{bounded(header.chip_name[kForeignSlot]),
                      bus_id_text(records.identity.busid_info[kForeignSlot]),
                      card_in_slot(records, kForeignSlot),
                      records.identity.vendor_id[kForeignSlot],
                      header.chip_id[kForeignSlot],
                      luid_in(records, kForeignSlot)};
}

bool is_overwritten(const DiscoveryRecords& records, int slot)
{
    return slot == kForeignSlot && slot_count(records) > kForeignSlot &&
           records.identity.other_vendor_chip_num == 1;
}

Adapter adapter_in_slot(const DiscoveryRecords& records, int slot)
{
    const find_adapter_header& header = records.adapters.header;
    const gpu_infos& infos = records.adapters.gpu_infos[slot];
    Adapter adapter;
    adapter.slot = slot;
    adapter.name = name_in_slot(records, slot);
    adapter.bus_id = bounded(infos.busid);
    adapter.vendor_id = infos.vendor_id;
    adapter.driver = header.IS_VA_driver[slot] == 1 ? DriverKind::kVa : DriverKind::kUnknown;
    if (is_overwritten(records, slot)) {
        adapter.luid = luid_of(adapter.bus_id);
    } else {
        adapter.card = card_in_slot(records, slot);
        adapter.device_id = header.chip_id[slot];
        adapter.luid = luid_in(records, slot);
    }
    return adapter;
}

Luid luid_of(const std::string& bus_id)
{
    unsigned domain = 0;
    unsigned bus = 0;
    unsigned device = 0;
    unsigned function = 0;
    if (std::sscanf(bus_id.c_str(), "%x:%x:%x.%u", &domain, &bus, &device, &function) != 4) {
        return {};
    }
    return {domain, bus << 16U | device << 8U | function};
}

}  // namespace nimba::smi
