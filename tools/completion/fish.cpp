// SPDX-License-Identifier: MIT
#include "tools/completion/shells.hpp"
#include "tools/completion/template.hpp"

#include <fmt/core.h>

namespace nimba::completion {
namespace {

constexpr const char* kTemplate = R"(# Completes @tool@ in fish; made by `@tool@ completion fish`.

# Says how far the line has come: its commands, then which of their arguments is next. "another"
# instead: it is in the command line of another program.
function __@function@_place
    set -l words (commandline -opc)
    set -l path ''
    set -l number 1
    set -l is_value no
    for word in $words[2..]
        if test $is_value = yes
            set is_value no
            continue
        end
        switch "$path $word"
            case @commands@
                set path "$path $word"
@another@            case @valued@
                set is_value yes
            case '* -?*'
            case '*'
                set number (math $number + 1)
        end
    end
    echo "$path $number"
end

# Whether the line has come to the commands PATH, and no further than the argument of number LAST,
# but to that of number FIRST.
function __@function@_at -a path first last
    set -l place (string split -r -m 1 ' ' -- (__@function@_place))
    test "$place[1]" = "$path"
    or return
    test -z "$first"
    or test "$place[2]" -ge "$first"
    or return
    test -z "$last"
    or test "$place[2]" -le "$last"
end

complete -c @tool@ -f
@completions@)";

constexpr const char* kListing = R"(
function __@function@_listing -a command
    set -l words (commandline -opc)
    set -l tool $words[1]
    $tool $command 2>/dev/null | string replace -r ' {2,}' \t
end
)";

constexpr const char* kAnotherBranch = R"(            case @marks@
                echo another
                return
)";

constexpr const char* kAnother = R"(
function __@function@_another
    test (__@function@_place) = another
end
function __@function@_complete_another
    set -l words (commandline -opc)
    set -l mark (contains -i -- -- $words)
    complete -C (string join ' ' -- (string escape -- $words[(math $mark + 1)..]) (commandline -ct))
end
complete -c @tool@ -n __@function@_another -a '(__@function@_complete_another)'
)";

std::string quoted_for_fish(std::string_view text)
{
    return fmt::format("'{}'", fill(text, {{"\\", "\\\\"}, {"'", "\\'"}}));
}

// What `complete` is told about a value.
std::string value_words(const Value& value, const std::string& function)
{
    std::string words;
    const auto append = [&words](const std::string& more) {
        words += (words.empty() ? "" : " ") + more;
    };
    for (const std::string& word : value.words) {
        append(word);
    }
    if (!value.listing.empty()) {
        append(fmt::format("(__{}_listing {})", function, value.listing));
    }
    if (value.processes) {
        append("(__fish_complete_pids)");
    }
    return fmt::format("{}{}", value.files ? " -F" : "",
                       words.empty() ? "" : fmt::format(" -a {}", quoted_for_fish(words)));
}

class Completions {
  public:
    explicit Completions(const Tool& tool) : tool_{tool}, function_{function_name(tool.name)} {}

    std::string text() const
    {
        std::string text;
        for (const Command& command : tool_.commands) {
            text += '\n' + completions_of(command);
        }
        return text;
    }

  private:
    std::string line(const std::string& condition, const std::string& what) const
    {
        return fmt::format("complete -c {} -n {}{}\n", tool_.name,
                           quoted_for_fish(fmt::format("__{}_{}", function_, condition)), what);
    }

    std::string completions_of(const Command& command) const
    {
        const std::string path = quoted_for_fish(command.path);
        std::string text;
        for (const std::size_t below : command.commands) {
            const Command& next = tool_.commands[below];
            text += line(fmt::format("at {} 1 1", path),
                         fmt::format(" -a {} -d {}", word_of(next), quoted_for_fish(next.summary)));
        }
        for (const Option& option : command.options) {
            text += line(fmt::format("at {}", path), option_words(option));
        }
        int number = 0;
        for (const Argument& argument : command.arguments) {
            ++number;
            if (!argument.value.is_free()) {
                const std::string last = argument.repeats ? "" : fmt::format(" {}", number);
                text += line(fmt::format("at {} {}{}", path, number, last),
                             value_words(argument.value, function_));
            }
        }
        return text;
    }

    std::string option_words(const Option& option) const
    {
        std::string text;
        for (const std::string& name : option.names) {
            text += name.starts_with("--") ? fmt::format(" -l {}", name.substr(2))
                                           : fmt::format(" -s {}", name.substr(1));
        }
        if (!option.value_name.empty()) {
            text += option.value.files ? " -r" : " -x";
            text += value_words(option.value, function_);
        }
        return fmt::format("{} -d {}", text, quoted_for_fish(option.help));
    }

    const Tool& tool_;
    std::string function_;
};

// The words of a `case` that fit "PATH WORD".
struct Cases {
    std::string commands;
    std::string valued;
    std::string marks;
    bool lists = false;
};

void append(std::string& words, const std::string& word)
{
    words += (words.empty() ? "" : " \\\n                ") + quoted_for_fish(word);
}

Cases cases_of(const Tool& tool)
{
    Cases cases;
    for (const Command& command : tool.commands) {
        if (!command.path.empty()) {
            append(cases.commands, command.path);
        }
        if (command.runs_another) {
            append(cases.marks, command.path + " --");
        }
        for (const Option& option : command.options) {
            cases.lists = cases.lists || !option.value.listing.empty();
            for (const std::string& name : option.names) {
                if (!option.value_name.empty()) {
                    append(cases.valued, command.path + ' ' + name);
                }
            }
        }
    }
    return cases;
}

}  // namespace

std::string fish_script(const Tool& tool)
{
    const std::string function = function_name(tool.name);
    const Cases cases = cases_of(tool);
    const auto with_names = [&](const char* text) {
        return fill(text,
                    {{"@tool@", tool.name}, {"@function@", function}, {"@marks@", cases.marks}});
    };
    const std::string completions = (cases.lists ? with_names(kListing) : "") +
                                    (cases.marks.empty() ? "" : with_names(kAnother)) +
                                    Completions{tool}.text();
    return fill(kTemplate, {{"@tool@", tool.name},
                            {"@function@", function},
                            {"@commands@", cases.commands},
                            {"@another@", cases.marks.empty() ? "" : with_names(kAnotherBranch)},
                            {"@valued@", cases.valued},
                            {"@completions@", completions}});
}

}  // namespace nimba::completion
