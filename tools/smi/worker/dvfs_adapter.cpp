// SPDX-License-Identifier: MIT
#include "tools/smi/worker/dvfs_adapter.hpp"

#include "tools/smi/worker/own_adapter.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

InfoDirectory info_directory(const find_adapter& record, const Adapter& adapter)
{
    return {record.gpu_infos[adapter.slot].jw_info_dir_fd,
            fmt::format("/sys/bus/pci/devices/{}/{}", adapter.bus_id,
                        adapter.vendor_id == QV_VENDOR_ID ? "qv_info" : "jw_info")};
}

}  // namespace

Message with_selected_adapter(
    Session& session, const Message& empty,
    const std::function<Message(const DvfsEntryPoints&, const SelectedAdapter&)>& answer)
{
    const auto found = find_dvfs_entry_points(session.library());
    if (const auto* const message = std::get_if<std::string>(&found)) {
        return Failure{ExitStatus::kNoLibrary, session.current_call(), *message};
    }
    const auto& entry = std::get<DvfsEntryPoints>(found);
    const auto adapter = own_adapter(session);
    if (!adapter) {
        return empty;
    }
    find_adapter record = record_to_enter(session.discover().adapters, *adapter);
    session.call("gpuinfo_select_new_chip", [&] { return entry.select_new_chip(&record); });
    return answer(entry, {adapter->bus_id, adapter->device_id, info_directory(record, *adapter)});
}

}  // namespace nimba::smi
