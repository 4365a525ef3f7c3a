// SPDX-License-Identifier: MIT
#include "tools/smi/command_line_help.hpp"

#include "tools/smi/top/unicode.hpp"

#include <fmt/core.h>
#include <fmt/format.h>

#include <sstream>
#include <utility>

namespace nimba::smi {
namespace {

constexpr int kColumns = 80;
constexpr int kNameColumns = 30;

// What stands beside a name.
std::string explanation(const std::string& text)
{
    return fmt::format("{}", fmt::join(top::in_lines(text, kColumns - kNameColumns, 0), "\n"));
}

}  // namespace

HelpFormatter::HelpFormatter()
{
    column_width(kNameColumns);
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const
{
    return CLI::detail::find_and_replace(CLI::Formatter::make_help(app, std::move(name), mode),
                                         "\n\n\n", "\n\n");
}

std::string HelpFormatter::make_description(const CLI::App* app) const
{
    return CLI::Formatter::make_description(app) + '\n';
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const
{
    std::stringstream out;
    CLI::detail::format_help(out, command->get_display_name(true),
                             explanation(command->get_description()), kNameColumns);
    return out.str();
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const
{
    return explanation(CLI::Formatter::make_option_desc(option));
}

}  // namespace nimba::smi
