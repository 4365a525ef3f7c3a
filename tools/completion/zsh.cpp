// SPDX-License-Identifier: MIT
#include "tools/completion/shells.hpp"
#include "tools/completion/template.hpp"

#include <fmt/core.h>

#include <string>
#include <vector>

namespace nimba::completion {
namespace {

constexpr const char* kTemplate = R"zsh(#compdef @tool@
# Completes @tool@ in zsh; made by `@tool@ completion zsh`.

# Offers words; one that ends in "=" wants more behind it.
_@function@_words()  # WORD...
{
    local expl
    local -i ret=1
    _wanted values expl value compadd -S '' -- ${(M)@:#*=} && ret=0
    _wanted values expl value compadd -- ${@:#*=} && ret=0
    return ret
}

# Offers the words that the lines of this command of the tool begin with.
_@function@_listing()  # COMMAND
{
    local line
    local -a described
    for line in ${(f)"$(_call_program $1 ${(q)tool} $1 2>/dev/null)"}; do
        described+=("${${line%%  *}//:/\\:}:${line#*  }")
    done
    _describe -t values $1 described
}

_@function@_processes()
{
    local expl
    _wanted processes expl process compadd -- /proc/<->(N:t)
}

# Completes the line of another program that stands behind "--"; fails when none does.
_@function@_another()
{
    local -i mark=${words[(i)--]}
    (( mark < CURRENT )) || return 1
    (( CURRENT -= mark ))
    shift mark words
    _normal -p $service
}

@commands@
local tool=$words[1]
_@function@ "$@"
)zsh";

constexpr const char* kCommand = R"(_@function@()
{
@another@    local curcontext=$curcontext state ret=1
    local -a line
    _arguments -C -S@before@@specifications@ && ret=0
@below@    return ret
}

)";

constexpr const char* kAnother = R"(    _@tool@_another && return
)";

// What stands behind a command is for the function of that command.
constexpr const char* kBefore = " -A '-*'";

constexpr const char* kBelow = R"(    case $state in
        command)
            local -a commands=(
@commands@            )
            _describe -t commands command commands && ret=0
            ;;
        behind)
            case $line[1] in
@branches@            esac
            ;;
    esac
)";

// A text between the marks of a specification.
std::string escaped(std::string_view text)
{
    return fill(text, {{"\\", "\\\\"}, {"[", "\\["}, {"]", "\\]"}, {":", "\\:"}});
}

std::string indented(std::string_view text)
{
    return fmt::format("                {}\n", text);
}

// An action, with the tag and the description that it has among others. The blank before an action
// keeps compadd's options away from what does not take them.
struct Action {
    std::string tag;
    std::string action;
};

std::vector<Action> actions(const Value& value, const std::string& function)
{
    std::vector<Action> all;
    if (!value.words.empty()) {
        std::string words;
        for (const std::string& word : value.words) {
            words += ' ' + quoted(word);
        }
        all.push_back({"values:value", fmt::format(" _{}_words{}", function, words)});
    }
    if (!value.listing.empty()) {
        all.push_back({"values:value", fmt::format(" _{}_listing {}", function, value.listing)});
    }
    if (value.processes) {
        all.push_back({"processes:process", fmt::format(" _{}_processes", function)});
    }
    if (value.files) {
        all.push_back({"files:file", "_files"});
    }
    return all;
}

// ":NAME:ACTION"
std::string message(const std::string& name, const Value& value, const std::string& function)
{
    const std::vector<Action> all = actions(value, function);
    std::string alternatives = " _alternative";
    for (const auto& [tag, action] : all) {
        alternatives += ' ' + quoted(fmt::format("{}:{}", tag, escaped(action)));
    }
    const std::string action = all.empty()      ? " "
                               : all.size() > 1 ? alternatives
                                                : all.front().action;
    return fmt::format(":{}:{}", escaped(name), escaped(action));
}

std::string specification(const std::string& text)
{
    return fmt::format(" \\\n        {}", quoted(text));
}

std::string specifications(const Option& option, const std::string& function)
{
    std::string all;
    for (const std::string& name : option.names) {
        all += (all.empty() ? "" : " ") + name;
    }
    const std::string before = option.repeats            ? "*"
                               : option.names.size() > 1 ? fmt::format("({})", all)
                                                         : "";
    std::string text;
    for (const std::string& name : option.names) {
        const bool is_long = name.starts_with("--");
        const std::string value =
            option.value_name.empty() ? "" : message(option.value_name, option.value, function);
        const char* const mark = value.empty() ? "" : is_long ? "=" : "+";
        text += specification(
            fmt::format("{}{}{}[{}]{}", before, name, mark, escaped(option.help), value));
    }
    return text;
}

std::string specifications(const Command& command, const std::string& function)
{
    std::string text;
    for (const Option& option : command.options) {
        text += specifications(option, function);
    }
    int number = 0;
    for (const Argument& argument : command.arguments) {
        ++number;
        text += specification((argument.repeats ? "*" : std::to_string(number)) +
                              message(argument.name, argument.value, function));
    }
    if (!command.commands.empty()) {
        text += specification("1: :->command") + specification("*:: :->behind");
    }
    return text;
}

std::string command_function(const std::string& function, const Command& command)
{
    return function + fill(command.path, {{" ", "__"}, {"-", "_"}});
}

std::string below(const Tool& tool, const Command& command, const std::string& function)
{
    if (command.commands.empty()) {
        return "";
    }
    std::string commands;
    std::string branches;
    for (const std::size_t place : command.commands) {
        const Command& next = tool.commands[place];
        const std::string word{word_of(next)};
        commands += indented(quoted(escaped(word) + ':' + next.summary));
        branches +=
            indented(fmt::format("{}) _{} && ret=0 ;;", word, command_function(function, next)));
    }
    return fill(kBelow, {{"@commands@", commands}, {"@branches@", branches}});
}

}  // namespace

std::string zsh_script(const Tool& tool)
{
    const std::string function = function_name(tool.name);
    std::string commands;
    for (const Command& command : tool.commands) {
        const std::string another =
            command.runs_another ? fill(kAnother, {{"@tool@", function}}) : "";
        commands += fill(kCommand, {{"@function@", command_function(function, command)},
                                    {"@another@", another},
                                    {"@before@", command.commands.empty() ? "" : kBefore},
                                    {"@specifications@", specifications(command, function)},
                                    {"@below@", below(tool, command, function)}});
    }
    commands.pop_back();
    return fill(kTemplate,
                {{"@tool@", tool.name}, {"@function@", function}, {"@commands@", commands}});
}

}  // namespace nimba::completion
