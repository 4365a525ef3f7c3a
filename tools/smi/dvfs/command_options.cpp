// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/command_options.hpp"

#include "tools/smi/option_value.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <vector>

namespace nimba::smi {
namespace {

using Texts = std::vector<std::string>;

// A forgotten value makes the next option look like one: that is no name of a file.
std::string file_fault(const std::string& text)
{
    const bool is_option = text.starts_with('-') && text != "-";
    return text.empty() || is_option
               ? fmt::format("expected a file (./-x for one that begins with \"-\"), got \"{}\"",
                             text)
               : "";
}

std::string field_fault(const std::string& name)
{
    return find_field(name) == nullptr
               ? fmt::format("there is no field \"{}\"; nimba-smi dvfs get shows all", name)
               : "";
}

std::string assignment_fault(const std::string& text)
{
    const auto parsed = parse_assignment(text);
    const auto* const fault = std::get_if<std::string>(&parsed);
    return fault == nullptr ? "" : *fault;
}

void take_fields(const Texts& names, DvfsOptions& dvfs)
{
    for (const std::string& name : names) {
        const DvfsField* const field = find_field(name);
        if (std::ranges::find(dvfs.fields, field) == dvfs.fields.end()) {
            dvfs.fields.push_back(field);
        }
    }
}

void take_assignments(const Texts& texts, DvfsOptions& dvfs)
{
    for (const std::string& text : texts) {
        const auto assignment = std::get<Assignment>(parse_assignment(text));
        if (std::ranges::find(dvfs.assignments, assignment.field, &Assignment::field) !=
            dvfs.assignments.end()) {
            throw CLI::ValidationError{fmt::format("{} is set twice", assignment.field->name)};
        }
        dvfs.assignments.push_back(assignment);
    }
    dvfs.assignments = in_order(std::move(dvfs.assignments));
}

void add_dry_run(CLI::App& app, DvfsOptions& dvfs)
{
    app.add_flag("--dry-run", dvfs.dry_run, "Show what would be written to which node");
}

void add_file(CLI::App& app, const char* help, DvfsOptions& dvfs)
{
    app.add_option("FILE", dvfs.file, help)->required()->check(CLI::Validator{file_fault, ""});
}

void add_get(CLI::App& command, Options& options)
{
    DvfsOptions& dvfs = options.dvfs;
    CLI::App& app = add_action(command, "get", "Show the settings of the adapters", dvfs.action,
                               DvfsAction::kGet);
    app.add_option_function<Texts>(
           "FIELD", [&dvfs](const Texts& names) { take_fields(names, dvfs); },
           "Fields such as dvfs_level or power_gating_3d (default: all)")
        ->check(CLI::Validator{field_fault, ""});
    app.add_flag("--csv", options.csv, "Print comma-separated values instead of text");
}

void add_set(CLI::App& command, DvfsOptions& dvfs)
{
    CLI::App& app =
        add_action(command, "set", "Change settings of an adapter", dvfs.action, DvfsAction::kSet);
    app.add_option_function<Texts>(
           "FIELD=VALUE", [&dvfs](const Texts& texts) { take_assignments(texts, dvfs); },
           "Settings such as dvfs_level=performance or power_gating_3d=0x10")
        ->required()
        ->check(CLI::Validator{assignment_fault, ""});
    add_dry_run(app, dvfs);
}

}  // namespace

void add_settings_adapter_option(CLI::App& command, Options& options)
{
    add_value(command, "-i,--adapter", "SLOT|BUS_ID",
              "a slot from 0 to 2 or a bus id such as 0000:01:00.0",
              "This adapter alone; needed to change one of several", parse_adapter_choice,
              [&options](const AdapterChoice& choice) { options.adapter = choice; });
}

void add_dvfs_options(CLI::App& command, Options& options)
{
    DvfsOptions& dvfs = options.dvfs;
    add_settings_adapter_option(command, options);
    add_get(command, options);
    add_set(command, dvfs);
    add_file(add_action(command, "save", "Keep the settings of an adapter in a file", dvfs.action,
                        DvfsAction::kSave),
             "The file; - is standard output", dvfs);
    CLI::App& restore = add_action(command, "restore", "Bring back settings that were saved",
                                   dvfs.action, DvfsAction::kRestore);
    add_file(restore, "The file; - is standard input", dvfs);
    restore.add_flag("--force", dvfs.force, "Also the settings of another chip");
    add_dry_run(restore, dvfs);
}

const char* dvfs_options_fault(const Options& options)
{
    const DvfsOptions& dvfs = options.dvfs;
    if (dvfs.action == DvfsAction::kNone) {
        return "dvfs needs get, set, save or restore";
    }
    if (options.csv && options.json) {
        return "--csv and --json exclude each other";
    }
    return dvfs.action == DvfsAction::kSave && dvfs.file == "-" && options.json
               ? "save - and --json exclude each other"
               : "";
}

}  // namespace nimba::smi
