// SPDX-License-Identifier: MIT
#include "tools/smi/command.hpp"
#include "tools/smi/command_line.hpp"
#include "tools/smi/export/command_options.hpp"
#include "tools/smi/export/listen_address.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <variant>
#include <vector>

namespace nimba::smi::exporting {
namespace {

using namespace std::chrono_literals;

constexpr Command kCommands[] = {
    {"export", "", nullptr, add_export_options, export_options_fault},
};

ParsedCommandLine parse(std::vector<const char*> words)
{
    words.insert(words.begin(), {"nimba-smi", "export"});
    return parse_command_line(static_cast<int>(words.size()), words.data(), kCommands);
}

Options options_of(const std::vector<const char*>& words)
{
    return std::get<Invocation>(parse(words)).options;
}

std::string fault_of(const std::vector<const char*>& words)
{
    return std::get<UsageError>(parse(words)).message;
}

TEST(ExportOptions, WithoutAnyTheyAreTheDocumentedDefaults)
{
    const ExportOptions options = options_of({}).exporting;
    EXPECT_FALSE(options.listen || options.textfile || options.interval);
    EXPECT_FALSE(options.once || options.no_processes);
    EXPECT_EQ(options.deadline, 2000ms);
    EXPECT_EQ(options.max_processes, 50U);
    EXPECT_TRUE(options.without.none());
    EXPECT_FALSE(options.skip_denied);
}

TEST(ExportOptions, AllThatThereAreAreTaken)
{
    const Options file = options_of({"--textfile", "a.prom", "--interval", "0.5", "--deadline",
                                     "0.25", "--without", "leaks,pagetables", "--max-processes",
                                     "0", "--no-processes", "--skip-denied", "-i", "1"});
    EXPECT_EQ(file.exporting.textfile, "a.prom");
    EXPECT_EQ(file.exporting.interval, 500ms);
    EXPECT_EQ(file.exporting.deadline, 250ms);
    EXPECT_EQ(file.exporting.without.to_ulong(), 0b1'1000'0000U);
    EXPECT_EQ(file.exporting.max_processes, 0U);
    EXPECT_TRUE(file.exporting.no_processes);
    EXPECT_TRUE(file.exporting.skip_denied);
    EXPECT_EQ(file.adapter, AdapterChoice{1});
    EXPECT_EQ(options_of({"--listen", "[::1]:0"}).exporting.listen,
              (ListenAddress{"::1", 0, true}));
    EXPECT_TRUE(options_of({"--once", "--json"}).exporting.once);
}

TEST(ExportOptions, WhatDoesNotGoTogetherIsRefused)
{
    const std::string faces =
        "--listen, --once and --textfile exclude each other; see nimba-smi --help";
    EXPECT_EQ(fault_of({"--once", "--textfile", "a"}), faces);
    EXPECT_EQ(fault_of({"--once", "--listen", "127.0.0.1:1"}), faces);
    EXPECT_EQ(fault_of({"--textfile", "a", "--listen", "127.0.0.1:1"}), faces);
    EXPECT_EQ(fault_of({"--once", "--interval", "1"}),
              "--interval goes with --textfile; see nimba-smi --help");
    EXPECT_EQ(fault_of({"--json"}), "--json goes with --once; see nimba-smi --help");
}

TEST(ExportOptions, ValuesBeyondTheirRangesAreRefused)
{
    EXPECT_EQ(fault_of({"--without", "leaks,fans"}),
              "--without: expected collectors of summary, clocks, settings, segments, sensors, "
              "counters, memory, leaks, pagetables, got \"leaks,fans\"; see nimba-smi --help");
    EXPECT_EQ(fault_of({"--deadline", "0.01"}),
              "--deadline: expected seconds from 0.1 to 600, got \"0.01\"; see nimba-smi --help");
    for (const char* const text : {"-1", "many", ""}) {
        EXPECT_TRUE(std::holds_alternative<UsageError>(parse({"--max-processes", text}))) << text;
    }
}

TEST(ListenAddress, IsANumericAddressAndAPort)
{
    EXPECT_EQ(parse_listen_address("127.0.0.1:9835"), (ListenAddress{"127.0.0.1", 9835, false}));
    EXPECT_EQ(parse_listen_address("0.0.0.0:0"), (ListenAddress{"0.0.0.0", 0, false}));
    EXPECT_EQ(parse_listen_address("[fe80::1]:65535"), (ListenAddress{"fe80::1", 65535, true}));
    for (const char* const text :
         {"", ":", "9835", ":9835", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1",
          "127.0.0.1:80s", "127.0.0.1:80,81", "localhost:9835", "::1:9835", "[::1]", "[]:1", "[:1",
          "[127.0.0.1]:1", "256.0.0.1:1", "127.0.0.1 :1"}) {
        EXPECT_EQ(parse_listen_address(text), std::nullopt) << text;
    }
}

TEST(ListenAddress, TextOfAnAddressIsWhatItWasReadFrom)
{
    EXPECT_EQ(text_of({"127.0.0.1", 9835, false}), "127.0.0.1:9835");
    EXPECT_EQ(text_of({"::1", 0, true}), "[::1]:0");
}

}  // namespace
}  // namespace nimba::smi::exporting
