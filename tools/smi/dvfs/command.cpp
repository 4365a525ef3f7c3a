// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/command.hpp"

#include "tools/smi/dvfs/ask.hpp"
#include "tools/smi/dvfs/change.hpp"
#include "tools/smi/dvfs/faults.hpp"
#include "tools/smi/dvfs/render.hpp"
#include "tools/smi/text/atomic_file.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace nimba::smi {
namespace {

// The fields that the options name, or all.
std::vector<const DvfsField*> shown_fields(const DvfsOptions& dvfs)
{
    std::vector<const DvfsField*> fields = dvfs.fields;
    if (fields.empty()) {
        std::ranges::transform(dvfs_fields(), std::back_inserter(fields),
                               [](const DvfsField& field) { return &field; });
    }
    return fields;
}

Report get(const Options& options)
{
    SettingsSnapshot snapshot;
    snapshot.fields = shown_fields(options.dvfs);
    snapshot.adapters = ask_adapters_for<DvfsReading>(kDvfsRequest, options, snapshot.problems);
    for (const auto& [adapter, reading] : snapshot.adapters) {
        std::ranges::move(reading_problems(adapter_subject(adapter), reading, snapshot.fields),
                          std::back_inserter(snapshot.problems));
    }
    std::string output = options.json  ? settings_json(snapshot)
                         : options.csv ? settings_csv(snapshot)
                                       : settings_text(snapshot);
    return {std::move(output), std::move(snapshot.problems)};
}

Report change(const Options& options, const SavedState& wanted)
{
    if (options.dvfs.dry_run) {
        DryRun run = plan_settings(options, wanted);
        return fitting(
            {options.json ? dry_run_json(run) : dry_run_text(run), std::move(run.problems)});
    }
    SettingsChange done = change_settings(options, wanted);
    return fitting(
        {options.json ? change_json(done) : change_text(done), std::move(done.problems)});
}

Report restore(const Options& options)
{
    auto saved = read_saved_state(options.dvfs.file);
    if (const auto* const fault = std::get_if<std::string>(&saved)) {
        return {"",
                {{ExitStatus::kUsage, std::nullopt, std::nullopt,
                  fmt::format("cannot restore {}: {}", options.dvfs.file, *fault)}}};
    }
    auto& state = std::get<SavedState>(saved);
    if (options.dvfs.force) {
        state.chip.reset();
    }
    return change(options, state);
}

// The adapter's settings, when all that the driver has of them can be read.
std::optional<SavedState> whole_state(const Options& options, const SlotIdentity& adapter,
                                      std::vector<Problem>& problems)
{
    AdapterWorker worker{options, adapter};
    const auto reading = of_this_adapter(worker.subject(),
                                         worker.ask<DvfsReading>(kDvfsRequest, problems), problems);
    if (!reading) {
        return std::nullopt;
    }
    std::ranges::move(reading_problems(worker.subject(), *reading, shown_fields({})),
                      std::back_inserter(problems));
    return problems.empty() ? std::optional(SavedState{reading->chip, state_of(*reading)})
                            : std::nullopt;
}

Report save(const Options& options)
{
    const std::string& file = options.dvfs.file;
    Report report;
    const auto adapter = adapter_to_change(options, report.problems);
    auto state = adapter ? whole_state(options, *adapter, report.problems) : std::nullopt;
    if (state && file == "-") {
        report.output = saved_text(*adapter, *state);
        return report;
    }
    const int error = state ? write_file(file, saved_text(*adapter, *state)) : 0;
    if (error != 0) {
        report.problems.push_back({ExitStatus::kFailed, std::nullopt, std::nullopt,
                                   fmt::format("cannot write {}: {}", file, std::strerror(error))});
        state.reset();
    }
    const auto saved = state ? std::move(state->assignments) : std::vector<Assignment>{};
    return fitting({options.json ? saved_json(adapter, file, saved, report.problems) : "",
                    std::move(report.problems)});
}

}  // namespace

Report dvfs_command(const Options& options)
{
    switch (options.dvfs.action) {
        case DvfsAction::kSet:
            return change(options, {std::nullopt, options.dvfs.assignments});
        case DvfsAction::kSave:
            return save(options);
        case DvfsAction::kRestore:
            return restore(options);
        case DvfsAction::kGet:
        case DvfsAction::kNone:
            break;
    }
    return get(options);
}

}  // namespace nimba::smi
