// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace nimba::smi {
namespace {

using namespace std::chrono_literals;

Report nothing(const Options& /*options*/)
{
    return {};
}

void add_rows(CLI::App& app, Options& options)
{
    app.add_option("--top", options.top)->type_name("ROWS");
}

const char* fault_of_rows(const Options& options)
{
    return options.top == 13U ? "13 rows bring bad luck" : "";
}

constexpr Command kCommands[] = {
    {"", "", nothing, add_rows, fault_of_rows},
    {"list", "Lists", nothing, nullptr, nullptr, "Look"},
    {"version", "Versions", nothing, add_rows, nullptr, "Help"},
};

ParsedCommandLine parse(std::initializer_list<const char*> words)
{
    std::vector<const char*> arguments{"nimba-smi"};
    arguments.insert(arguments.end(), words);
    return parse_command_line(static_cast<int>(arguments.size()), arguments.data(), kCommands);
}

std::string usage_error(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const error = std::get_if<UsageError>(&parsed);
    return error == nullptr ? "accepted" : error->message;
}

TEST(CommandLine, HasDefaults)
{
    const auto parsed = parse({"list"});
    ASSERT_TRUE(std::holds_alternative<Invocation>(parsed));
    const auto& [command, options] = std::get<Invocation>(parsed);
    EXPECT_EQ(command, &kCommands[1]);
    EXPECT_FALSE(options.json);
    EXPECT_FALSE(options.verbose);
    EXPECT_EQ(options.timeout, 10s);
    EXPECT_EQ(options.library, "libnimba_mgmt_interface.so.0");
}

TEST(CommandLine, TakesOptionsOnBothSidesOfTheCommand)
{
    const auto parsed = parse({"--json", "--timeout", "2.5", "version", "-v", "--library=./x.so"});
    ASSERT_TRUE(std::holds_alternative<Invocation>(parsed));
    const auto& [command, options] = std::get<Invocation>(parsed);
    EXPECT_EQ(command, &kCommands[2]);
    EXPECT_TRUE(options.json);
    EXPECT_TRUE(options.verbose);
    EXPECT_EQ(options.timeout, 2500ms);
    EXPECT_EQ(options.library, "./x.so");
}

TEST(CommandLine, RefusesWhatMakesNoSense)
{
    EXPECT_EQ(usage_error({"lists", "--rows"}),
              "there is no command \"lists\"; see nimba-smi --help");
    EXPECT_EQ(usage_error({"lists", "list"}),
              "there is no command \"lists\"; see nimba-smi --help");
    EXPECT_EQ(usage_error({"list", "version"}),
              "list takes no \"version\"; see nimba-smi list --help");
    EXPECT_EQ(usage_error({"list", "--timeout"}),
              "--timeout: 1 required SECONDS missing; see nimba-smi --help");
    EXPECT_EQ(usage_error({"list", "--json=3"}), "--json takes no value; see nimba-smi --help");
    EXPECT_EQ(usage_error({"list", "--json=false"}), "--json takes no value; see nimba-smi --help");
    EXPECT_EQ(usage_error({"list", "--library", ""}),
              "--library: expected a path; see nimba-smi --help");
}

TEST(CommandLine, IsForTheOverviewWithoutACommand)
{
    const auto parsed = parse({"--top", "5", "--json"});
    ASSERT_TRUE(std::holds_alternative<Invocation>(parsed));
    const auto& [command, options] = std::get<Invocation>(parsed);
    EXPECT_EQ(command, &kCommands[0]);
    EXPECT_EQ(options.top, 5U);
    EXPECT_TRUE(options.json);
    EXPECT_EQ(std::get<Invocation>(parse({})).options.top, std::nullopt);
    EXPECT_EQ(usage_error({"--top", "13"}), "13 rows bring bad luck; see nimba-smi --help");
    EXPECT_EQ(usage_error({"--rows"}), "there is no option --rows; see nimba-smi --help");
}

TEST(CommandLine, LetsTheOverviewsOptionsGoWithNoOtherCommand)
{
    EXPECT_EQ(usage_error({"list", "--top=5"}),
              "list has no option --top=5; see nimba-smi list --help");
    for (const auto words : {std::initializer_list<const char*>{"--top", "5", "list"},
                             std::initializer_list<const char*>{"--top", "5", "version"}}) {
        EXPECT_EQ(usage_error(words), std::string{"--top is in front of "} + words.end()[-1] +
                                          ": a command's options are behind it; see nimba-smi "
                                          "--help");
    }
    // Its own option of the same name.
    const auto parsed = parse({"version", "--top", "13"});
    ASSERT_TRUE(std::holds_alternative<Invocation>(parsed));
    EXPECT_EQ(std::get<Invocation>(parsed).command, &kCommands[2]);
    EXPECT_EQ(std::get<Invocation>(parsed).options.top, 13U);
}

TEST(CommandLine, RequiresACommandWhereNoneIsWithoutAName)
{
    const char* const arguments[] = {"nimba-smi"};
    const auto parsed = parse_command_line(1, arguments, std::span{kCommands}.subspan(1));
    ASSERT_TRUE(std::holds_alternative<UsageError>(parsed));
    EXPECT_EQ(std::get<UsageError>(parsed).message, "a command is required; see nimba-smi --help");
}

TEST(CommandLine, TakesAUnitForSizes)
{
    EXPECT_EQ(std::get<Invocation>(parse({"list"})).options.units, SizeUnit::kAuto);
    EXPECT_EQ(std::get<Invocation>(parse({"list", "--units", "MB"})).options.units, SizeUnit::kMB);
    EXPECT_EQ(usage_error({"--units", "mb"}),
              "--units: expected auto, B, KiB, MiB, GiB, kB, MB or GB, got \"mb\"; see nimba-smi "
              "--help");
}

TEST(CommandLine, BoundsTheTimeout)
{
    EXPECT_EQ(usage_error({"list", "--timeout", "0.001"}), "accepted");
    EXPECT_EQ(usage_error({"list", "--timeout", "86400"}), "accepted");
    for (const std::string text : {"0", "-1", "0.0009", "86401", "nan", "inf", "1s"}) {
        EXPECT_EQ(usage_error({"list", "--timeout", text.c_str()}),
                  "--timeout: expected seconds from 0.001 to 86400, got \"" + text +
                      "\"; see nimba-smi --help");
    }
}

TEST(CommandLine, HasAHelpOfFullLinesAndSingleBlankOnes)
{
    const auto summary = parse({"--help"});
    ASSERT_TRUE(std::holds_alternative<PrintText>(summary));
    const std::string& text = std::get<PrintText>(summary).text;
    EXPECT_EQ(text.find("\n\n\n"), std::string::npos) << text;
    EXPECT_FALSE(text.ends_with("\n\n"));
    EXPECT_NE(
        text.find("\n  --timeout SECONDS           Give up a call that takes longer than this\n"
                  "                              (default: 10)\n"),
        std::string::npos)
        << text;
}

TEST(CommandLine, PrintsTheVersionAndTheHelp)
{
    const auto version = parse({"--version"});
    ASSERT_TRUE(std::holds_alternative<PrintText>(version));
    EXPECT_EQ(std::get<PrintText>(version).text, "nimba-smi 0.1.0\n");
    const auto help = parse({"list", "--help"});
    ASSERT_TRUE(std::holds_alternative<PrintText>(help));
    EXPECT_NE(std::get<PrintText>(help).text.find("Lists"), std::string::npos);
    const auto summary = parse({"--help"});
    ASSERT_TRUE(std::holds_alternative<PrintText>(summary));
    EXPECT_TRUE(std::get<PrintText>(summary).text.starts_with(
        "Shows the adapters of the Nimba and QV chips, their memory, page tables, clocks,\n"
        "sensors and use, and changes their settings. Without a command it shows an\n"
        "overview.\n\nUsage: nimba-smi [OPTIONS] [SUBCOMMAND]\n\nOptions:\n"));
    const std::string& text = std::get<PrintText>(summary).text;
    for (const char* const part :
         {"\nOptions:\n", "\nOptions of the overview:\n  --top ROWS", "\nLook:\n  list",
          "\nHelp:\n  version", "\nGet help:\n  completion", "\nExamples:\n  nimba-smi  "}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << text;
    }
    EXPECT_LT(text.find("Exit status:"), text.find("Examples:"));
    EXPECT_EQ(std::get<PrintText>(help).text,
              "Lists\n\n"
              "Usage: nimba-smi list [OPTIONS]\n\n"
              "Options:\n"
              "  -h,--help                   Print this help message and exit\n\n"
              "--json, --units, --verbose, --timeout and --library may stand here too;\n"
              "see nimba-smi --help.\n");
}

}  // namespace
}  // namespace nimba::smi
