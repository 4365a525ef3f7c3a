// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/command.hpp"

#include "tools/smi/dvfs/change.hpp"
#include "tools/smi/prefer/application.hpp"
#include "tools/smi/prefer/change.hpp"
#include "tools/smi/prefer/gpu.hpp"
#include "tools/smi/prefer/preference_worker.hpp"
#include "tools/smi/prefer/render.hpp"
#include "tools/smi/process/discover.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <utility>

namespace nimba::smi {
namespace {

Problem problem(ExitStatus status, std::string message)
{
    return {status, std::nullopt, std::nullopt, std::move(message)};
}

void append(std::vector<Problem>& problems, std::vector<Problem> more)
{
    std::ranges::move(more, std::back_inserter(problems));
}

std::optional<PreferenceFile> find_file(PreferenceSnapshot& snapshot)
{
    auto found = preference_file_in(std::getenv("HOME"));
    if (auto* const fault = std::get_if<Problem>(&found)) {
        snapshot.problems.push_back(std::move(*fault));
        return std::nullopt;
    }
    snapshot.file = std::get<PreferenceFile>(found).path;
    return std::get<PreferenceFile>(std::move(found));
}

// Finds out which GPUs are present. That is worth no more than a hint: the file needs none of them.
void discover_gpus(const Options& options, PreferenceSnapshot& snapshot)
{
    DiscoveryOutcome outcome = discover_adapters(options);
    for (Problem& fault : outcome.problems) {
        fault.status = ExitStatus::kOk;
    }
    snapshot.discovery = std::move(outcome.discovery);
    append(snapshot.problems, std::move(outcome.problems));
}

// Has a worker of its own read the file.
void read_back(const Options& options, const PreferenceFile& file, PreferenceSnapshot& snapshot)
{
    snapshot.preferences =
        PreferenceWorker{options, file.home}.ask(kPreferGetRequest, {}, snapshot.problems);
}

Report rendered(const Options& options, PreferenceSnapshot snapshot)
{
    std::string output = options.json  ? preferences_json(snapshot)
                         : options.csv ? preferences_csv(snapshot)
                                       : preferences_text(snapshot);
    return fitting({std::move(output), std::move(snapshot.problems), std::move(snapshot.told)});
}

void list(const Options& options, const PreferenceFile& file, PreferenceSnapshot& snapshot)
{
    const auto content = read_preferences(file.path, snapshot.problems);
    if (!content) {
        return;
    }
    if (content->exists) {
        read_back(options, file, snapshot);
    } else {
        snapshot.preferences.emplace();
    }
    if (!snapshot.preferences) {
        return;
    }
    if (snapshot.preferences->empty()) {
        snapshot.problems.push_back(
            problem(ExitStatus::kOk,
                    fmt::format("{} {}; nimba-smi prefer set adds a preference", file.path,
                                content->exists ? "holds no preference" : "is not there")));
        return;
    }
    discover_gpus(options, snapshot);
}

void change(const Options& options, const PreferenceFile& file, const Planner& plan,
            PreferenceSnapshot& snapshot)
{
    ChangeOutcome outcome = change_preferences(options, file, plan);
    append(snapshot.problems, std::move(outcome.problems));
    snapshot.told = std::move(outcome.told);
    if (!outcome.expected) {
        return;
    }
    read_back(options, file, snapshot);
    if (snapshot.preferences && snapshot.preferences != outcome.expected) {
        snapshot.problems.push_back(problem(
            ExitStatus::kNotTaken,
            fmt::format(
                "{} does not hold what was asked for: another program may have changed it at "
                "the same time",
                file.path)));
    }
}

// The preference to set as far as the command line tells it.
std::optional<Preference> asked_preference(const PreferOptions& prefer,
                                           std::vector<Problem>& problems)
{
    const char* const search_path = std::getenv("PATH");
    std::error_code error;
    Preference preference;
    preference.path =
        application_path(prefer.application, std::filesystem::current_path(error).string(),
                         search_path == nullptr ? "" : search_path);
    preference.application = application_name(preference.path);
    preference.value = prefer.value;
    const std::string fault = application_fault(preference.path);
    if (!fault.empty()) {
        problems.push_back(problem(ExitStatus::kUsage,
                                   fmt::format("the application \"{}\" can have no preference: {}",
                                               prefer.application, fault)));
        return std::nullopt;
    }
    if (!is_executable(preference.path)) {
        problems.push_back(
            problem(ExitStatus::kOk,
                    prefer.application.find('/') == std::string::npos
                        ? fmt::format("there is no {0} in PATH: its preference has the name alone",
                                      prefer.application)
                        : fmt::format("there is no program {} yet", preference.path)));
    }
    return preference;
}

// Fills in the GPU that the options choose. Returns whether there is one that fits.
bool fill_gpu(const Options& options, Preference& preference, PreferenceSnapshot& snapshot)
{
    DiscoveryOutcome outcome = discover_adapters(options);
    append(snapshot.problems, std::move(outcome.problems));
    snapshot.discovery = std::move(outcome.discovery);
    const auto gpu = snapshot.discovery
                         ? chosen_gpu(*snapshot.discovery, *options.prefer.gpu, snapshot.problems)
                         : std::nullopt;
    if (!gpu) {
        return false;
    }
    const auto location = location_in(gpu->bus_id);
    if (!location) {
        snapshot.problems.push_back(
            problem(ExitStatus::kUsage, fmt::format("the preference file cannot carry the bus id "
                                                    "{}",
                                                    gpu->bus_id)));
        return false;
    }
    preference.gpu = *location;
    preference.gpu_name = carried_name(gpu->name.value_or(""));
    if (!gpu->name) {
        snapshot.problems.push_back(problem(
            ExitStatus::kOk, fmt::format("the name of adapter {} is hidden by the GPU of another "
                                         "vendor: its preference has the bus id alone",
                                         gpu->bus_id)));
    }
    return true;
}

void set(const Options& options, const PreferenceFile& file, PreferenceSnapshot& snapshot)
{
    auto preference = asked_preference(options.prefer, snapshot.problems);
    if (!preference || !fill_gpu(options, *preference, snapshot)) {
        return;
    }
    auto made = make_preference_directory(file);
    if (auto* const fault = std::get_if<Problem>(&made)) {
        snapshot.problems.push_back(std::move(*fault));
        return;
    }
    if (std::get<bool>(made)) {
        snapshot.problems.push_back(
            problem(ExitStatus::kOk, fmt::format("made the directory {}", file.directory)));
    }
    change(
        options, file,
        [&](std::vector<Preference> held) {
            return std::optional(plan_setting(std::move(held), *preference));
        },
        snapshot);
}

void remove(const Options& options, const PreferenceFile& file, PreferenceSnapshot& snapshot)
{
    const std::string_view application = application_name(options.prefer.application);
    if (application.empty()) {
        snapshot.problems.push_back(
            problem(ExitStatus::kUsage,
                    fmt::format("\"{}\" names no application", options.prefer.application)));
        return;
    }
    change(
        options, file,
        [&](std::vector<Preference> held) {
            auto plan = plan_removal(std::move(held), application);
            if (!plan) {
                snapshot.problems.push_back(
                    problem(ExitStatus::kNotTaken,
                            fmt::format("{} has no preference for {}; nimba-smi prefer list shows "
                                        "those that it has",
                                        file.path, application)));
            }
            return plan;
        },
        snapshot);
    if (snapshot.preferences && !snapshot.preferences->empty()) {
        discover_gpus(options, snapshot);
    }
}

}  // namespace

Report prefer_command(const Options& options)
{
    PreferenceSnapshot snapshot;
    if (const auto file = find_file(snapshot)) {
        switch (options.prefer.action) {
            case PreferAction::kSet:
                set(options, *file, snapshot);
                break;
            case PreferAction::kRemove:
                remove(options, *file, snapshot);
                break;
            case PreferAction::kList:
            case PreferAction::kNone:
                list(options, *file, snapshot);
                break;
        }
    }
    return rendered(options, std::move(snapshot));
}

}  // namespace nimba::smi
