// SPDX-License-Identifier: MIT
#include "tools/completion/model.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace nimba::completion {
namespace {

std::string first_line(const std::string& text)
{
    std::string line = text.substr(0, text.find('\n'));
    if (line.ends_with(':')) {
        line.pop_back();
    }
    return line;
}

// How the help calls the option's value.
std::string value_name(const CLI::Option& option)
{
    return option.get_option_text().empty() ? option.get_type_name() : option.get_option_text();
}

class Walk {
  public:
    explicit Walk(const Hints& hints) : hints_{hints} {}

    // Appends the command and those below it. `inherited` are the options that the commands above
    // take behind it as well. Returns its place.
    std::size_t add(const CLI::App& app, const std::string& path, std::vector<Option> inherited)
    {
        const std::size_t place = commands_.size();
        commands_.push_back(
            {path,
             first_line(app.get_description()),
             {},
             {},
             {},
             std::ranges::find(hints_.runs_another, path) != hints_.runs_another.end()});
        std::vector<Option> options = options_of(app);
        std::ranges::remove_copy_if(
            inherited, std::back_inserter(options), [&](const Option& above) {
                return std::ranges::find(options, above.names, &Option::names) != options.end();
            });
        commands_[place].options = options;
        commands_[place].arguments = arguments_of(app);
        std::erase_if(options, [&](const Option& option) { return is_own(app, option); });
        for (const CLI::App* const below :
             app.get_subcommands([](const CLI::App*) { return true; })) {
            const std::size_t added =
                add(*below, path + ' ' + below->get_name(),
                    below->get_fallthrough() ? options : std::vector<Option>{});
            commands_[place].commands.push_back(added);
        }
        return place;
    }

    std::vector<Command> commands() && { return std::move(commands_); }

  private:
    Value value_named(std::string_view name) const
    {
        const auto known = std::ranges::find(hints_.values, name, &ValueOf::name);
        return known == hints_.values.end() ? Value{} : known->value;
    }

    std::vector<Option> options_of(const CLI::App& app) const
    {
        std::vector<Option> options;
        for (const CLI::Option* const parsed : app.get_options()) {
            if (!parsed->get_positional()) {
                options.push_back(option_of(*parsed));
            }
        }
        return options;
    }

    // Whether the option, one of `app` or of those above, is for `app` alone.
    bool is_own(const CLI::App& app, const Option& option) const
    {
        const CLI::Option* const parsed = app.get_option_no_throw(option.names.front());
        return parsed != nullptr && !hints_.own_group.empty() &&
               parsed->get_group() == hints_.own_group;
    }

    Option option_of(const CLI::Option& parsed) const
    {
        Option option;
        for (const std::string& name : parsed.get_snames()) {
            option.names.push_back('-' + name);
        }
        for (const std::string& name : parsed.get_lnames()) {
            option.names.push_back(fmt::format("--{}", name));
        }
        option.help = first_line(parsed.get_description());
        option.repeats = parsed.get_expected_max() > 1;
        if (parsed.get_items_expected_max() > 0) {
            option.value_name = value_name(parsed);
            option.value = value_named(option.names.back());
            if (option.value.is_free()) {
                option.value = value_named(option.value_name);
            }
        }
        return option;
    }

    std::vector<Argument> arguments_of(const CLI::App& app) const
    {
        std::vector<Argument> arguments;
        for (const CLI::Option* const parsed : app.get_options()) {
            if (parsed->get_positional()) {
                const std::string name = parsed->get_name(true);
                arguments.push_back({name, value_named(name), parsed->get_expected_max() > 1});
            }
        }
        return arguments;
    }

    const Hints& hints_;
    std::vector<Command> commands_;
};

}  // namespace

std::string_view word_of(const Command& command)
{
    const std::string_view path = command.path;
    return path.empty() ? path : path.substr(path.rfind(' ') + 1);
}

Tool model_of(const CLI::App& app, const Hints& hints)
{
    Walk walk{hints};
    walk.add(app, "", {});
    return {app.get_name(), std::move(walk).commands()};
}

}  // namespace nimba::completion
