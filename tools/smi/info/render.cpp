// SPDX-License-Identifier: MIT
#include "tools/smi/info/render.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/summary/fields.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

std::string adapter_text(const AdapterState& state)
{
    const SlotIdentity& adapter = state.adapter;
    std::vector<Row> rows{{"FIELD", "VALUE", "UNIT", "SOURCE"}};
    for (const SummaryField& field : summary_fields(state)) {
        rows.push_back({field.key, field_text(field.value, "n/a"),
                        field.unit.empty() ? "-" : field.unit, field.source});
    }
    return fmt::format("Slot {}: {}, {}\n", adapter.slot, printable(adapter.name.value_or("n/a")),
                       adapter.bus_id) +
           aligned(rows);
}

Document fields_json(const AdapterState& state)
{
    Document fields = Document::object();
    for (const SummaryField& field : summary_fields(state)) {
        fields[field.key] = {
            {"value", field_json(field.value)},
            {"unit", field.unit.empty() ? Document(nullptr) : Document(field.unit)},
            {"source", field.source}};
    }
    return fields;
}

}  // namespace

std::string info_text(const MachineSnapshot& snapshot)
{
    std::string text;
    for (const AdapterState& state : snapshot.adapters) {
        if (state.there) {
            text += text.empty() ? "" : "\n";
            text += adapter_text(state);
        }
    }
    return text;
}

std::string info_csv(const MachineSnapshot& snapshot)
{
    std::vector<Row> rows{{"slot", "bus_id", "field", "value", "unit", "source"}};
    for (const AdapterState& state : snapshot.adapters) {
        if (!state.there) {
            continue;
        }
        for (const SummaryField& field : summary_fields(state)) {
            rows.push_back({std::to_string(state.adapter.slot), state.adapter.bus_id, field.key,
                            field_text(field.value, ""), field.unit, field.source});
        }
    }
    return csv_text(rows);
}

std::string info_json(const MachineSnapshot& snapshot)
{
    Document adapters = Document::array();
    for (const AdapterState& state : snapshot.adapters) {
        if (state.there) {
            Document object = json_adapter(state.adapter);
            object["fields"] = fields_json(state);
            adapters.push_back(std::move(object));
        }
    }
    return json_text({{"schema", "nimba-smi.info.1"},
                      {"adapters", std::move(adapters)},
                      {"errors", json_errors(snapshot.problems)}});
}

}  // namespace nimba::smi
