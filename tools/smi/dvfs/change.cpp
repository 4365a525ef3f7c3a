// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/change.hpp"

#include "tools/smi/dvfs/ask.hpp"
#include "tools/smi/dvfs/faults.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace nimba::smi {
namespace {

void append(std::vector<Problem>& problems, std::vector<Problem> more)
{
    std::ranges::move(more, std::back_inserter(problems));
}

// The state of another chip may mean other things.
void check_chip(const Subject& subject, const DvfsReading& reading, const SavedState& wanted,
                std::vector<Problem>& problems)
{
    if (wanted.chip && wanted.chip != reading.chip) {
        problems.push_back({ExitStatus::kUsage, subject.bus_id, std::nullopt,
                            fmt::format("{}: the state is of another chip, {:#06x}; --force brings "
                                        "it back all the same",
                                        subject.name, *wanted.chip)});
    }
}

// The adapter's settings, when the assignments could be made there.
std::optional<DvfsReading> checked_reading(AdapterWorker& worker, const SavedState& wanted,
                                           std::vector<Problem>& problems)
{
    const Subject& subject = worker.subject();
    auto reading =
        of_this_adapter(subject, worker.ask<DvfsReading>(kDvfsRequest, problems), problems);
    if (!reading) {
        return std::nullopt;
    }
    check_chip(subject, *reading, wanted, problems);
    append(problems, missing_fields(subject, *reading, wanted.assignments));
    return problems.empty() ? std::move(reading) : std::nullopt;
}

// The settings before and after they were written.
std::optional<DvfsWriting> write(AdapterWorker& worker, std::span<const Assignment> assignments,
                                 std::vector<Problem>& problems)
{
    auto writing = of_this_adapter(
        worker.subject(),
        worker.ask<DvfsWriting>(
            fmt::format("{} {}", kDvfsWriteRequest, encode_assignments(assignments)), problems),
        problems);
    if (!writing) {
        problems.push_back({ExitStatus::kOk, worker.subject().bus_id, std::nullopt,
                            fmt::format("{}: some of the settings may have been written; nimba-smi "
                                        "dvfs get shows what they are",
                                        worker.subject().name)});
    }
    return writing;
}

void add_verdicts(const Subject& subject, SettingsChange& change, const DvfsReading& after)
{
    for (const Outcome& outcome : change.outcomes) {
        if (outcome.verdict == Verdict::kAccepted || outcome.verdict == Verdict::kUnchanged) {
            continue;
        }
        const DvfsField& field = *outcome.field;
        change.problems.push_back(
            {ExitStatus::kNotTaken, subject.bus_id, std::nullopt,
             fmt::format("{}: the driver did not take {}={}; {}", subject.name, field.name,
                         value_text(field, outcome.asked),
                         sentence_of(outcome.verdict, value_text(field, outcome.after)))});
        if (outcome.verdict == Verdict::kUnknown) {
            if (auto problem = reading_problem(subject, access_of(after.nodes, field.node))) {
                change.problems.push_back(*std::move(problem));
            }
        }
    }
}

}  // namespace

SettingsChange change_settings(const Options& options, const SavedState& wanted)
{
    SettingsChange change;
    change.adapter = adapter_to_change(options, change.problems);
    if (!change.adapter) {
        return change;
    }
    AdapterWorker worker{options, *change.adapter};
    const auto reading = checked_reading(worker, wanted, change.problems);
    if (!reading) {
        return change;
    }
    const auto writes = changes(wanted.assignments, *reading);
    append(change.problems, writing_problems(worker.subject(), *reading, writes));
    if (!change.problems.empty()) {
        return change;
    }
    auto writing = writes.empty() ? std::optional(DvfsWriting{reading->bus_id, *reading, *reading})
                                  : write(worker, wanted.assignments, change.problems);
    if (writing) {
        change.outcomes = outcomes_of(wanted.assignments, writing->before, writing->after);
        add_verdicts(worker.subject(), change, writing->after);
    }
    return change;
}

DryRun plan_settings(const Options& options, const SavedState& wanted)
{
    DryRun run;
    run.adapter = adapter_to_change(options, run.problems);
    if (run.adapter) {
        AdapterWorker worker{options, *run.adapter};
        if (const auto reading = checked_reading(worker, wanted, run.problems)) {
            run.writes = changes(wanted.assignments, *reading);
        }
    }
    return run;
}

Report fitting(Report report)
{
    if (overall_status(report.problems) == ExitStatus::kUsage) {
        report.output.clear();
    }
    return report;
}

}  // namespace nimba::smi
