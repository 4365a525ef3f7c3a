// SPDX-License-Identifier: MIT
#include "tools/smi/snapshot/json.hpp"

#include "tools/smi/clocks/figures.hpp"
#include "tools/smi/list/render.hpp"
#include "tools/smi/mem/view.hpp"
#include "tools/smi/monitor/time_text.hpp"
#include "tools/smi/ps/render.hpp"
#include "tools/smi/sensors/figures.hpp"
#include "tools/smi/summary/fields.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/usage/figures.hpp"

#include <utility>

namespace nimba::smi {
namespace {

// With null for what only an answer would tell.
Document identity_json(const AdapterState& state)
{
    if (state.summary.adapter) {
        return adapter_json(*state.summary.adapter);
    }
    const SlotIdentity& adapter = state.adapter;
    return {{"slot", adapter.slot},     {"name", or_null(adapter.name)},
            {"bus_id", adapter.bus_id}, {"card", nullptr},
            {"vendor_id", nullptr},     {"device_id", nullptr},
            {"driver", "unknown"},      {"luid", nullptr}};
}

Document processes_json(const UsageTable& table)
{
    Document devices = Document::array();
    for (const DeviceUsage& device : table.devices) {
        devices.push_back(device_json(device));
    }
    return {{"devices", std::move(devices)}, {"total", usage_json(table.total)}};
}

}  // namespace

Document state_json(const AdapterState& adapter)
{
    Document object = identity_json(adapter);
    object["answered"] = adapter.there;
    object["summary"] = summary_json(adapter);
    object["memory"] = adapter.segments.segments.empty() ? Document(nullptr)
                                                         : segments_view().json(adapter.segments);
    object["clocks"] = clocks_view().json(clock_figures(adapter.clocks));
    object["sensors"] = sensors_view().json(sensor_figures(adapter.sensors));
    object["usage"] = usage_view().json(usage_figures(adapter.counters, adapter.rates));
    object["processes"] =
        adapter.processes_known ? processes_json(adapter.processes) : Document(nullptr);
    return object;
}

Document snapshot_json(const MachineSnapshot& snapshot)
{
    Document adapters = Document::array();
    for (const AdapterState& adapter : snapshot.adapters) {
        adapters.push_back(state_json(adapter));
    }
    const auto& foreign = snapshot.foreign_gpu;
    return {{"schema", "nimba-smi.overview.1"},
            {"time", utc_text(snapshot.time)},
            {"adapters", std::move(adapters)},
            {"foreign_gpu", foreign ? foreign_json(*foreign) : Document(nullptr)},
            {"errors", json_errors(snapshot.problems)}};
}

}  // namespace nimba::smi
