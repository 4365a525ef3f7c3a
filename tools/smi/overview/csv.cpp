// SPDX-License-Identifier: MIT
#include "tools/smi/overview/csv.hpp"

#include "tools/smi/clocks/figures.hpp"
#include "tools/smi/list/render.hpp"
#include "tools/smi/monitor/printer.hpp"
#include "tools/smi/sensors/figures.hpp"
#include "tools/smi/snapshot/derived.hpp"
#include "tools/smi/summary/fields.hpp"
#include "tools/smi/usage/figures.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace nimba::smi {
namespace {

constexpr std::array kSummaryColumns{"driver_version", "firmware_version", "pcie_generation",
                                     "pcie_lanes"};

template <typename Number>
std::string cell(const std::optional<Number>& number)
{
    return number ? std::to_string(*number) : "";
}

Row identity_row(const AdapterState& state)
{
    const auto& described = state.summary.adapter;
    return {std::to_string(state.adapter.slot), state.adapter.bus_id,
            state.adapter.name.value_or(""), described ? cell(described->card) : "",
            std::string{driver_word(described ? described->driver : DriverKind::kUnknown)}};
}

Row summary_row(const AdapterState& state)
{
    const std::vector<SummaryField> fields = summary_fields(state);
    Row row;
    for (const char* const key : kSummaryColumns) {
        row.push_back(field_text(std::ranges::find(fields, key, &SummaryField::key)->value, ""));
    }
    return row;
}

}  // namespace

Row overview_csv_header()
{
    Row row{"slot", "bus_id", "name", "card", "driver"};
    row.insert(row.end(), kSummaryColumns.begin(), kSummaryColumns.end());
    row.insert(row.end(), {"memory_used_bytes", "memory_total_bytes", "devices"});
    row = joined_row(std::move(row), clocks_view().csv_header);
    row = joined_row(std::move(row), sensors_view().csv_header);
    return joined_row(std::move(row), usage_view().csv_header);
}

Row overview_csv_row(const AdapterState& adapter)
{
    const MemoryUse memory = memory_use(adapter);
    Row row = joined_row(identity_row(adapter), summary_row(adapter));
    row.insert(row.end(),
               {cell(memory.used), cell(memory.total),
                adapter.processes_known ? std::to_string(adapter.processes.devices.size()) : ""});
    row = joined_row(std::move(row), clocks_view().csv_rows(clock_figures(adapter.clocks)).front());
    row = joined_row(std::move(row),
                     sensors_view().csv_rows(sensor_figures(adapter.sensors)).front());
    return joined_row(
        std::move(row),
        usage_view().csv_rows(usage_figures(adapter.counters, adapter.rates)).front());
}

}  // namespace nimba::smi
