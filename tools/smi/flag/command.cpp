// SPDX-License-Identifier: MIT
#include "tools/smi/flag/command.hpp"

#include "tools/smi/dvfs/ask.hpp"
#include "tools/smi/dvfs/change.hpp"
#include "tools/smi/dvfs/faults.hpp"
#include "tools/smi/flag/render.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <cerrno>
#include <utility>

namespace nimba::smi {
namespace {

// Why the flag is not available; nothing when it is.
std::optional<Problem> missing_flag(const Subject& subject, const FlagReading& reading,
                                    ExitStatus status)
{
    if (reading.flag) {
        return std::nullopt;
    }
    if (auto problem = reading_problem(subject, reading.access)) {
        return problem;
    }
    const bool there = reading.access.read_error == 0;
    return Problem{
        status, subject.bus_id, std::nullopt,
        fmt::format("{}: {} {}", subject.name,
                    there ? "there is no number in" : "the driver has no", reading.access.path)};
}

Report get(const Options& options)
{
    FlagSnapshot snapshot;
    snapshot.adapters = ask_adapters_for<FlagReading>(kFlagRequest, options, snapshot.problems);
    for (const auto& [adapter, reading] : snapshot.adapters) {
        if (auto problem = missing_flag(adapter_subject(adapter), reading, ExitStatus::kOk)) {
            snapshot.problems.push_back(*std::move(problem));
        }
    }
    std::string output = options.json ? flag_json(snapshot) : flag_text(snapshot);
    return {std::move(output), std::move(snapshot.problems)};
}

uint32_t asked_value(const FlagOptions& flag, uint32_t before)
{
    return flag.action == FlagAction::kSet ? before | flag.bits : before & ~flag.bits;
}

// The flag before and after it was written; it is not when that would not change it.
std::optional<FlagWriting> write(AdapterWorker& worker, const FlagOptions& flag,
                                 const FlagReading& reading, std::vector<Problem>& problems)
{
    if (asked_value(flag, *reading.flag) == *reading.flag) {
        return FlagWriting{reading.bus_id, reading, reading};
    }
    if (auto problem = writing_problem(worker.subject(), reading.access)) {
        problems.push_back(*std::move(problem));
        return std::nullopt;
    }
    const bool set = flag.action == FlagAction::kSet;
    const std::string request =
        fmt::format("{} {} {}", kFlagWriteRequest, set ? flag.bits : 0U, set ? 0U : flag.bits);
    return of_this_adapter(worker.subject(), worker.ask<FlagWriting>(request, problems), problems);
}

void judge_writing(const Subject& subject, const FlagOptions& flag, const FlagWriting& writing,
                   FlagChange& change)
{
    const uint32_t before = writing.before.flag.value_or(0);
    const uint32_t asked = asked_value(flag, before);
    const auto& after = writing.after.flag;
    const Verdict verdict = judge(asked, before, after);
    change.outcome = FlagOutcome{before, asked, after, verdict};
    if (verdict != Verdict::kAccepted && verdict != Verdict::kUnchanged) {
        change.problems.push_back(
            {ExitStatus::kNotTaken, subject.bus_id, std::nullopt,
             fmt::format("{}: the driver did not take the flag {}; {}", subject.name,
                         bits_text(asked), sentence_of(verdict, bits_text(after)))});
    }
    if (auto problem = missing_flag(subject, writing.after, ExitStatus::kNotTaken)) {
        change.problems.push_back(*std::move(problem));
    }
}

FlagChange change_flag(const Options& options)
{
    FlagChange change;
    change.adapter = adapter_to_change(options, change.problems);
    if (!change.adapter) {
        return change;
    }
    AdapterWorker worker{options, *change.adapter};
    const auto reading = of_this_adapter(
        worker.subject(), worker.ask<FlagReading>(kFlagRequest, change.problems), change.problems);
    if (!reading) {
        return change;
    }
    if (auto problem = missing_flag(worker.subject(), *reading, ExitStatus::kNotTaken)) {
        change.problems.push_back(*std::move(problem));
        return change;
    }
    if (const auto writing = write(worker, options.flag, *reading, change.problems)) {
        judge_writing(worker.subject(), options.flag, *writing, change);
    }
    return change;
}

}  // namespace

Report flag_command(const Options& options)
{
    if (options.flag.action == FlagAction::kGet) {
        return get(options);
    }
    FlagChange change = change_flag(options);
    return fitting({options.json ? flag_change_json(change) : flag_change_text(change),
                    std::move(change.problems)});
}

}  // namespace nimba::smi
