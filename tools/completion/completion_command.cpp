// SPDX-License-Identifier: MIT
#include "tools/completion/completion_command.hpp"

#include "tools/completion/shells.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <map>

namespace nimba::completion {
namespace {

// By the words for the shells.
const std::map<std::string, std::string (*)(const Tool&)> kShells{
    {"bash", bash_script}, {"fish", fish_script}, {"zsh", zsh_script}};

std::string shell_fault(const std::string& shell)
{
    return kShells.contains(shell) ? ""
                                   : fmt::format("expected bash, fish or zsh, got \"{}\"", shell);
}

}  // namespace

CompletionCommand::CompletionCommand(CLI::App& app)
    : app_{app},
      subcommand_{app.add_subcommand("completion",
                                     "Print a script that completes command lines in a shell")}
{
    subcommand_->add_option("SHELL", shell_, "bash, fish or zsh")
        ->required()
        ->check(CLI::Validator{shell_fault, ""});
}

bool CompletionCommand::parsed() const
{
    return subcommand_->parsed();
}

std::string CompletionCommand::script(const Hints& hints) const
{
    Hints all = hints;
    Value shells;
    for (const auto& [name, script] : kShells) {
        shells.words.push_back(name);
    }
    all.values.push_back({"SHELL", shells});
    return kShells.at(shell_)(model_of(app_, all));
}

}  // namespace nimba::completion
