// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/render.hpp"

#include "tools/smi/memory/faces.hpp"
#include "tools/smi/text/csv.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/table.hpp"

#include <fmt/core.h>

#include <utility>

namespace nimba::smi {
namespace {

// The level is its name, all else a number.
Document value_json(const DvfsField& field, const std::optional<int64_t>& value)
{
    if (!value) {
        return nullptr;
    }
    return field.kind == FieldKind::kLevel ? Document(value_text(field, *value)) : Document(*value);
}

Document adapter_json(const std::optional<SlotIdentity>& adapter)
{
    return adapter ? json_adapter(*adapter) : Document(nullptr);
}

}  // namespace

std::string settings_text(const SettingsSnapshot& snapshot)
{
    if (snapshot.adapters.empty()) {
        return {};
    }
    std::vector<Row> rows{{"SLOT", "FIELD", "VALUE"}};
    for (const auto& [adapter, reading] : snapshot.adapters) {
        for (const DvfsField* const field : snapshot.fields) {
            rows.push_back({std::to_string(adapter.slot), std::string{field->name},
                            value_text(*field, value_of(reading, *field))});
        }
    }
    return aligned(rows);
}

std::string settings_csv(const SettingsSnapshot& snapshot)
{
    std::vector<Row> rows{{"slot", "bus_id", "field", "value"}};
    for (const auto& [adapter, reading] : snapshot.adapters) {
        for (const DvfsField* const field : snapshot.fields) {
            const auto value = value_of(reading, *field);
            rows.push_back({std::to_string(adapter.slot), adapter.bus_id, std::string{field->name},
                            value ? value_text(*field, *value) : ""});
        }
    }
    return csv_text(rows);
}

std::string settings_json(const SettingsSnapshot& snapshot)
{
    Document adapters = Document::array();
    for (const auto& [adapter, reading] : snapshot.adapters) {
        Document fields = Document::object();
        for (const DvfsField* const field : snapshot.fields) {
            fields[std::string{field->name}] = value_json(*field, value_of(reading, *field));
        }
        Document object = json_adapter(adapter);
        object["fields"] = std::move(fields);
        adapters.push_back(std::move(object));
    }
    return json_text({{"schema", "nimba-smi.dvfs.1"},
                      {"adapters", std::move(adapters)},
                      {"errors", json_errors(snapshot.problems)}});
}

std::string change_text(const SettingsChange& change)
{
    if (change.outcomes.empty()) {
        return {};
    }
    std::vector<Row> rows{{"FIELD", "BEFORE", "ASKED", "RESULT"}};
    for (const Outcome& outcome : change.outcomes) {
        const DvfsField& field = *outcome.field;
        rows.push_back({std::string{field.name}, value_text(field, outcome.before),
                        value_text(field, outcome.asked),
                        sentence_of(outcome.verdict, value_text(field, outcome.after))});
    }
    return aligned(rows);
}

std::string change_json(const SettingsChange& change)
{
    Document fields = Document::array();
    for (const Outcome& outcome : change.outcomes) {
        const DvfsField& field = *outcome.field;
        fields.push_back({{"field", field.name},
                          {"before", value_json(field, outcome.before)},
                          {"asked", value_json(field, outcome.asked)},
                          {"after", value_json(field, outcome.after)},
                          {"result", word_of(outcome.verdict)}});
    }
    return json_text({{"schema", "nimba-smi.dvfs-set.1"},
                      {"adapter", adapter_json(change.adapter)},
                      {"fields", std::move(fields)},
                      {"errors", json_errors(change.problems)}});
}

std::string dry_run_text(const DryRun& run)
{
    std::string text;
    for (const auto& [field, value] : run.writes) {
        text += fmt::format("{}: {}\n", field->node, command_line_of(*field, value));
    }
    return text;
}

std::string dry_run_json(const DryRun& run)
{
    Document writes = Document::array();
    for (const auto& [field, value] : run.writes) {
        writes.push_back({{"node", field->node}, {"line", command_line_of(*field, value)}});
    }
    return json_text({{"schema", "nimba-smi.dvfs-dry-run.1"},
                      {"adapter", adapter_json(run.adapter)},
                      {"writes", std::move(writes)},
                      {"errors", json_errors(run.problems)}});
}

std::string saved_json(const std::optional<SlotIdentity>& adapter, const std::string& file,
                       std::span<const Assignment> state, std::span<const Problem> problems)
{
    Document fields = Document::object();
    for (const auto& [field, value] : state) {
        fields[std::string{field->name}] = value_json(*field, value);
    }
    return json_text({{"schema", "nimba-smi.dvfs-save.1"},
                      {"adapter", adapter_json(adapter)},
                      {"file", state.empty() ? Document(nullptr) : Document(file)},
                      {"fields", std::move(fields)},
                      {"errors", json_errors(problems)}});
}

}  // namespace nimba::smi
