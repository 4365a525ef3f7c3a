// SPDX-License-Identifier: MIT
// What can stand on a tool's command line, as far as it is needed to complete it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace nimba::completion {

// What completes a value; with nothing set, it is free text.
struct Value {
    std::vector<std::string> words{};  // one that ends in "=" wants more behind it
    std::string listing{};             // a command of the tool whose lines begin with a word each
    bool files = false;
    bool processes = false;

    bool is_free() const { return words.empty() && listing.empty() && !files && !processes; }
};

struct Option {
    std::vector<std::string> names;  // with their dashes, the short ones first
    std::string help;                // one line
    std::string value_name;          // empty: it takes no value
    Value value;
    bool repeats = false;
};

struct Argument {
    std::string name;
    Value value;
    bool repeats = false;
};

struct Command {
    std::string path;  // the words that lead to it, each behind a blank: "", " dvfs", " dvfs set"
    std::string summary;
    std::vector<Option> options;  // also those of the commands above that may stand here
    std::vector<Argument> arguments;
    std::vector<std::size_t> commands;  // below it, by their places in Tool::commands
    bool runs_another = false;          // behind "--" stands a command line of another program
};

struct Tool {
    std::string name;
    std::vector<Command> commands;  // a command stands before those below it; the first is the tool
};

// The last word of a command's path; empty for the tool itself.
std::string_view word_of(const Command& command);

// The completion of the values that the help calls `name`, or that the option of that name takes.
struct ValueOf {
    std::string_view name;  // "FILE", "--directory"
    Value value;
};

// What a tool knows about its command line beyond what its parser does.
struct Hints {
    std::vector<ValueOf> values;
    std::vector<std::string_view> runs_another{};  // the paths of the commands that do
    std::string_view own_group{};  // options of this group stand behind no command below theirs
};

// Everything that the parser of a tool takes.
Tool model_of(const CLI::App& app, const Hints& hints);

}  // namespace nimba::completion
