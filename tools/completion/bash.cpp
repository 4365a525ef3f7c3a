// SPDX-License-Identifier: MIT
#include "tools/completion/shells.hpp"
#include "tools/completion/template.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace nimba::completion {
namespace {

constexpr const char* kTemplate = R"(# Completes @tool@ in bash; made by `@tool@ completion bash`.

# Sets what can stand behind the commands PATH: commands, options, and those of the options that
# take a value. runs_another is set when a command line of another program stands behind "--".
_@function@_table()  # PATH
{
    runs_another=
    case $1 in
@table@    esac
}

# Offers the values of an option, or of the argument of that number. Fails when they can be anything.
_@function@_value()  # PATH OPTION|NUMBER
{
    case "$1 $2" in
@values@        *) return 1 ;;
    esac
}

_@function@_words()  # WORD...
{
    local word
    for word; do
        [[ $word != "$current"* ]] || COMPREPLY+=("$word")
    done
}

# The shell's own completion of file names, where no word fits.
_@function@_files()
{
    compopt -o default
}

_@function@_processes()
{
    local process
    for process in /proc/[0-9]*; do
        _@function@_words "${process##*/}"
    done
}

# The words that the lines of this command of the tool begin with.
_@function@_listing()  # COMMAND
{
    local line
    while IFS= read -r line; do
        _@function@_words "${line%%  *}"
    done < <("${words[0]}" "$1" 2>/dev/null)
}

# Completes the command line of another program that begins with that word of COMP_WORDS.
_@function@_another()  # INDEX
{
    local with_offset
    for with_offset in _comp_command_offset _command_offset; do
        if declare -F "$with_offset" >/dev/null; then
            "$with_offset" "$1"
            return
        fi
    done
    if ((COMP_CWORD == $1)); then
        mapfile -t COMPREPLY < <(compgen -c -- "${COMP_WORDS[COMP_CWORD]}")
    fi
    compopt -o default
}

_@function@()
{
    COMPREPLY=()
    # The words as @tool@ gets them: readline parts them at "=" and ":", too.
    local -a words=() begins=()
    local rest=${COMP_LINE:0:COMP_POINT} blanks word index
    for ((index = 0; index <= COMP_CWORD; ++index)); do
        blanks=${rest%%[^[:space:]]*}
        rest=${rest#"$blanks"}
        word=${COMP_WORDS[index]}
        ((index < COMP_CWORD)) || word=$rest
        if ((index == 0)) || [[ -n $blanks ]]; then
            words+=("$word")
            begins+=("$index")
        else
            words[-1]+=$word
        fi
        rest=${rest#"$word"}
    done
    # What readline takes to be typed already of the last of them.
    local current=${words[-1]} typed
    typed=${current%"$word"}
    [[ -n ${word//[=:]/} ]] || typed=$current

    local path='' option='' ended='' commands options valued runs_another
    local -i number=1
    _@function@_table ''
    for ((index = 1; index < ${#words[@]} - 1; ++index)); do
        word=${words[index]}
        if [[ -n $option ]]; then
            option=
        elif [[ -z $ended && $word == -- ]]; then
            if [[ -n $runs_another ]]; then
                _@function@_another "${begins[index + 1]}"
                return
            fi
            ended=1
        elif [[ -z $ended && $word == -?* ]]; then
            [[ " $valued " != *" $word "* ]] || option=$word
        elif [[ -z $ended && " $commands " == *" $word "* ]]; then
            path+=" $word"
            _@function@_table "$path"
        else
            number+=1
        fi
    done

    local before=
    if [[ -n $option ]]; then
        _@function@_value "$path" "$option"
    elif [[ -z $ended && $current == --*=* ]]; then
        option=${current%%=*}
        before=$option=
        current=${current#*=}
        _@function@_value "$path" "$option"
    elif [[ -z $ended && $current == -* ]]; then
        # shellcheck disable=SC2086 # a list
        _@function@_words $options
    else
        # shellcheck disable=SC2086 # a list
        _@function@_words $commands
        if ! _@function@_value "$path" "$number" && [[ -z $commands$current ]]; then
            # shellcheck disable=SC2086 # a list
            _@function@_words $options
        fi
    fi
    for index in "${!COMPREPLY[@]}"; do
        word=$before${COMPREPLY[index]}
        COMPREPLY[index]=${word#"$typed"}
    done
    if ((${#COMPREPLY[@]} == 1)) && [[ ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace
    fi
}

complete -F _@function@ @tool@
)";

// A branch of a `case`.
std::string branch(const std::string& patterns, const std::string& body)
{
    return fmt::format("        {})\n{}            ;;\n", patterns, body);
}

std::string line(const std::string& text)
{
    return fmt::format("            {}\n", text);
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::string table_branch(const Tool& tool, const Command& command)
{
    std::vector<std::string> commands;
    for (const std::size_t below : command.commands) {
        commands.emplace_back(word_of(tool.commands[below]));
    }
    std::vector<std::string> options;
    std::vector<std::string> valued;
    for (const Option& option : command.options) {
        options.insert(options.end(), option.names.begin(), option.names.end());
        if (!option.value_name.empty()) {
            valued.insert(valued.end(), option.names.begin(), option.names.end());
        }
    }
    return branch(quoted(command.path),
                  line(fmt::format("commands={}", quoted(joined(commands)))) +
                      line(fmt::format("options={}", quoted(joined(options)))) +
                      line(fmt::format("valued={}", quoted(joined(valued)))) +
                      (command.runs_another ? line("runs_another=1") : ""));
}

// The lines that offer the value; empty for a free one.
std::string offer(const Value& value, const std::string& function)
{
    std::string text;
    if (!value.words.empty()) {
        std::string words;
        for (const std::string& word : value.words) {
            words += fmt::format(" \\\n                {}", quoted(word));
        }
        text += line(fmt::format("_{}_words{}", function, words));
    }
    if (!value.listing.empty()) {
        text += line(fmt::format("_{}_listing {}", function, value.listing));
    }
    if (value.processes) {
        text += line(fmt::format("_{}_processes", function));
    }
    if (value.files) {
        text += line(fmt::format("_{}_files", function));
    }
    return text;
}

// The branches of `case "$1 $2"`, one for all places where the same values stand.
class ValueBranches {
  public:
    void add(const std::string& pattern, const std::string& body)
    {
        if (body.empty()) {
            return;
        }
        const auto known = std::ranges::find(branches_, body, &Branch::second);
        if (known == branches_.end()) {
            branches_.emplace_back(pattern, body);
        } else {
            known->first += fmt::format(" |\\\n            {}", pattern);
        }
    }

    std::string text() const
    {
        std::string text;
        for (const auto& [patterns, body] : branches_) {
            text += branch(patterns, body);
        }
        return text;
    }

  private:
    using Branch = std::pair<std::string, std::string>;
    std::vector<Branch> branches_;
};

void add_values(const Command& command, const std::string& function, ValueBranches& branches)
{
    for (const Option& option : command.options) {
        for (const std::string& name : option.names) {
            branches.add(quoted(command.path + ' ' + name), offer(option.value, function));
        }
    }
    int number = 0;
    for (const Argument& argument : command.arguments) {
        ++number;
        branches.add(argument.repeats ? fmt::format("{}[0-9]*", quoted(command.path + ' '))
                                      : quoted(fmt::format("{} {}", command.path, number)),
                     offer(argument.value, function));
    }
}

}  // namespace

std::string bash_script(const Tool& tool)
{
    const std::string function = function_name(tool.name);
    std::string table;
    ValueBranches values;
    for (const Command& command : tool.commands) {
        table += table_branch(tool, command);
        add_values(command, function, values);
    }
    return fill(kTemplate, {{"@tool@", tool.name},
                            {"@function@", function},
                            {"@table@", table},
                            {"@values@", values.text()}});
}

}  // namespace nimba::completion
