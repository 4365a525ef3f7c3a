// SPDX-License-Identifier: MIT
#include "tools/smi/command.hpp"
#include "tools/smi/command_line.hpp"
#include "tools/smi/report/command_options.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <variant>
#include <vector>

namespace nimba::smi {
namespace {

using namespace std::chrono_literals;

constexpr Command kCommands[] = {
    {"report", "", nullptr, add_report_options, report_options_fault},
};

ParsedCommandLine parse(std::vector<const char*> words)
{
    words.insert(words.begin(), {"nimba-smi", "report"});
    return parse_command_line(static_cast<int>(words.size()), words.data(), kCommands);
}

std::string fault_of(const std::vector<const char*>& words)
{
    return std::get<UsageError>(parse(words)).message;
}

TEST(ReportOptions, AreAFileAndWhatItTellsOf)
{
    const ReportOptions live =
        std::get<Invocation>(parse({"--samples", "10", "--interval", "0.5", "a.html"}))
            .options.report;
    EXPECT_EQ(live.file, "a.html");
    EXPECT_EQ(live.capture, std::nullopt);
    EXPECT_EQ(live.samples, 10U);
    EXPECT_EQ(live.interval, 500ms);
    const ReportOptions captured =
        std::get<Invocation>(parse({"--capture", "a.tar.zst", "-"})).options.report;
    EXPECT_EQ(captured.file, "-");
    EXPECT_EQ(captured.capture, "a.tar.zst");
}

TEST(ReportOptions, WhatMakesNoSenseIsRefused)
{
    EXPECT_EQ(fault_of({}), "FILE is required; see nimba-smi --help");
    EXPECT_EQ(fault_of({"--capture", "a.tar.zst", "--samples", "2", "a.html"}),
              "--samples and --interval are of this machine: a capture has samples of its own; see "
              "nimba-smi --help");
    EXPECT_EQ(fault_of({"--capture", "a.tar.zst", "--interval", "2", "a.html"}),
              "--samples and --interval are of this machine: a capture has samples of its own; see "
              "nimba-smi --help");
    EXPECT_EQ(
        fault_of({"--json", "-"}),
        "--json needs standard output for itself: write the page to a file; see nimba-smi --help");
    for (const char* const samples : {"0", "100001", "-1", "x"}) {
        EXPECT_NE(fault_of({"--samples", samples, "a.html"}), "") << samples;
    }
}

}  // namespace
}  // namespace nimba::smi
