// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/change.hpp"

#include "tools/smi/prefer/directory_lock.hpp"
#include "tools/smi/prefer/lost_lines.hpp"
#include "tools/smi/prefer/preference_worker.hpp"
#include "tools/smi/prefer/scratch_home.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/text/atomic_file.hpp"
#include "tools/smi/text/output.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <cstring>
#include <system_error>
#include <utility>

namespace nimba::smi {
namespace {

// No file name that the library reads has a "]": its removal only writes the file anew.
constexpr const char* kNoApplication = "]";

struct Rewriting {
    std::vector<Preference> before;
    std::string unchanged;  // what the library makes of the file without a change
    std::string changed;
    std::vector<Preference> expected;
};

Problem problem(ExitStatus status, std::string message)
{
    return {status, std::nullopt, std::nullopt, std::move(message)};
}

// Has the library make the planned change at the copy in `scratch`.
std::optional<Rewriting> rewrite(PreferenceWorker& worker, const ScratchHome& scratch,
                                 const Planner& make_plan, std::vector<Problem>& problems)
{
    Preference nothing;
    nothing.path = kNoApplication;
    auto before = worker.ask(kPreferRemoveRequest, nothing, problems);
    const auto unchanged = scratch.preferences();
    const auto plan = before ? make_plan(*before) : std::nullopt;
    if (!unchanged || !plan) {
        return std::nullopt;
    }
    for (int i = 0; i < plan->times; ++i) {
        if (!worker.ask(plan->request, plan->preference, problems)) {
            return std::nullopt;
        }
    }
    return Rewriting{*std::move(before), *unchanged, scratch.preferences().value_or(""),
                     plan->expected};
}

// The change as a text that the library reads as it should.
std::optional<Rewriting> proven_rewriting(const Options& options, const std::string& original,
                                          const Planner& plan, int stop,
                                          std::vector<Problem>& problems)
{
    std::optional<ScratchHome> scratch;
    try {
        scratch.emplace(original);
    } catch (const std::system_error& error) {
        problems.push_back(problem(ExitStatus::kFailed, error.what()));
        return std::nullopt;
    }
    PreferenceWorker worker{options, scratch->home(), stop};
    auto rewriting = rewrite(worker, *scratch, plan, problems);
    if (!rewriting) {
        return std::nullopt;
    }
    const auto after =
        PreferenceWorker{options, scratch->home(), stop}.ask(kPreferGetRequest, {}, problems);
    if (after && after != rewriting->expected) {
        problems.push_back(
            problem(ExitStatus::kNotTaken,
                    "the library did not write the preferences as it was told to; nothing was "
                    "changed"));
    }
    return after == rewriting->expected ? std::move(rewriting) : std::nullopt;
}

// Tells of lines that the change would lose, and keeps the file with them.
std::optional<Problem> keep_lost_lines(const std::string& path, const std::string& original,
                                       const Rewriting& rewriting, std::vector<Problem>& told)
{
    const int lost = lost_lines(original, rewriting.unchanged);
    if (lost == 0) {
        return std::nullopt;
    }
    const std::string copy = path + ".bak";
    if (const int error = write_file(copy, original); error != 0) {
        return problem(error == EACCES ? ExitStatus::kNoPermission : ExitStatus::kFailed,
                       fmt::format("cannot write {}: {}", copy, std::strerror(error)));
    }
    told.push_back(problem(
        ExitStatus::kOk,
        fmt::format("{} has {} that the library does not keep, such as comments or unknown keys; a "
                    "copy is in {}",
                    path, lost == 1 ? "a line" : fmt::format("{} lines", lost), copy)));
    print_error_line(told.back().message);
    return std::nullopt;
}

}  // namespace

ChangeOutcome change_preferences(const Options& options, const PreferenceFile& file,
                                 const Planner& plan)
{
    ChangeOutcome outcome;
    const StopSignals signals{SignalEffect::kEndOfProcess};
    const DirectoryLock lock{file.directory, options.timeout, signals};
    if (lock.state() == LockState::kBusy) {
        outcome.problems.push_back(
            problem(ExitStatus::kFailed,
                    fmt::format("{} is being changed by another nimba-smi: {}; run the command "
                                "again",
                                file.path, no_answer_within(options.timeout))));
        return outcome;
    }
    const auto original = read_preferences(file.path, outcome.problems);
    auto rewriting = original ? proven_rewriting(options, original->text, plan,
                                                 signals.descriptor(), outcome.problems)
                              : std::nullopt;
    if (!rewriting) {
        return outcome;
    }
    if (rewriting->expected != rewriting->before) {
        auto failure = keep_lost_lines(file.path, original->text, *rewriting, outcome.told);
        if (!failure) {
            failure = replace_preferences(file.path, *original, rewriting->changed);
        }
        if (failure) {
            outcome.problems.push_back(*std::move(failure));
            return outcome;
        }
    }
    outcome.expected = std::move(rewriting->expected);
    return outcome;
}

}  // namespace nimba::smi
