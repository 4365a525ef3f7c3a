// SPDX-License-Identifier: MIT
#include "tools/smi/worker/own_adapter.hpp"

#include "tools/smi/worker/driver_files.hpp"

namespace nimba::smi {

std::optional<int> slot_now(int before, std::string_view bus_id,
                            std::span<const SlotIdentity> slots)
{
    std::optional<int> found;
    for (const SlotIdentity& identity : slots) {
        if (identity.bus_id == bus_id && (!found || identity.slot == before)) {
            found = identity.slot;
        }
    }
    return found;
}

std::optional<Adapter> own_adapter(Session& session)
{
    const DiscoveryRecords& records = session.discover();
    const ServedAdapter served = session.options().adapter.value_or(ServedAdapter{});
    const auto found = slot_now(served.slot, served.bus_id, slot_identities(records));
    if (!found) {
        return std::nullopt;
    }
    Adapter adapter = adapter_in_slot(records, *found);
    const int directory = records.adapters.gpu_infos[*found].pci_dir_fd;
    if (!adapter.device_id) {
        adapter.device_id = pci_id_in(directory, "device");
    }
    if (!adapter.card) {
        adapter.card = card_in(directory);
    }
    return adapter;
}

bool has_primary_node(const Adapter& adapter)
{
    return adapter.card && exists(primary_node_path(*adapter.card));
}

find_adapter record_to_enter(const find_adapter& found, const Adapter& adapter)
{
    find_adapter record = found;
    record.chip_id_idx = adapter.slot;
    record.header.chip_id[adapter.slot] = adapter.device_id.value_or(0);
    record.header.drm_card_idx[adapter.slot] = adapter.card.value_or(-1);
    return record;
}

}  // namespace nimba::smi
