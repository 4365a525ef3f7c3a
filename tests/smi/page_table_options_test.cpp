// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"
#include "tools/smi/pagetable/command_options.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace nimba::smi {
namespace {

Report nothing(const Options& /*options*/)
{
    return {};
}

constexpr Command kCommands[] = {
    {"pagetable", "Page tables", nothing, add_page_table_options, page_table_options_fault}};

ParsedCommandLine parse(std::initializer_list<const char*> words)
{
    std::vector<const char*> arguments{"nimba-smi", "pagetable"};
    arguments.insert(arguments.end(), words);
    return parse_command_line(static_cast<int>(arguments.size()), arguments.data(), kCommands);
}

PageTableOptions options(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const invocation = std::get_if<Invocation>(&parsed);
    return invocation == nullptr ? PageTableOptions{{-1}} : invocation->options.page_tables;
}

std::string fault(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const error = std::get_if<UsageError>(&parsed);
    return error == nullptr ? "" : error->message;
}

TEST(PageTableOptions, HaveDefaults)
{
    const PageTableOptions defaults = options({});
    EXPECT_TRUE(defaults.pids.empty());
    EXPECT_EQ(defaults.split, AddressSplit{});
    EXPECT_FALSE(defaults.has_view());
    EXPECT_EQ(defaults.depth, std::nullopt);
}

TEST(PageTableOptions, AreTaken)
{
    EXPECT_EQ(options({"--pid", "7", "--pid=8"}).pids, (std::vector<int64_t>{7, 8}));
    EXPECT_EQ(options({"--pid", "7", "--pid", "7"}).pids, (std::vector<int64_t>{7}));
    EXPECT_EQ(options({"--tree", "--depth", "0"}).depth, 0);
    EXPECT_EQ(options({"--va", "0x1A2B"}).address, 0x1a2bU);
    EXPECT_EQ(options({"--va", "4096"}).address, 4096U);
    EXPECT_TRUE(options({"--map", "--json"}).map);
    EXPECT_EQ(options({"--svg", "-"}).svg, "-");
    EXPECT_EQ(options({"--svg", "./-x"}).svg, "./-x");
    EXPECT_EQ(options({"--split", "1,2,3,3,10"}).split, AddressSplit({1, 2, 3, 3, 10}));
}

TEST(PageTableOptions, AreRefusedWhenTheyMakeNoSense)
{
    EXPECT_EQ(fault({"--pid", "-1"}),
              "--pid: expected a process id, got \"-1\"; see nimba-smi --help");
    EXPECT_EQ(fault({"--va", "0x"}),
              "--va: expected an address such as 0x100000000, got \"0x\"; see nimba-smi --help");
    EXPECT_NE(fault({"--va", "100000000000000000000"}), "");
    EXPECT_NE(fault({"--tree", "--depth", "4"}), "");
    EXPECT_NE(fault({"--split", "9,9,9,9"}), "");
    EXPECT_NE(fault({"--svg", ""}), "");
    EXPECT_EQ(fault({"--svg", "--map"}),
              "--svg: expected a file (./-x for one that begins with \"-\"), got \"--map\"; see "
              "nimba-smi --help");
    EXPECT_EQ(fault({"--depth", "1"}), "--depth needs --tree; see nimba-smi --help");
    EXPECT_EQ(fault({"--tree", "--map"}),
              "--tree, --va, --map and --svg exclude each other; see nimba-smi --help");
    EXPECT_EQ(fault({"--csv", "--json"}),
              "--csv and --json exclude each other; see nimba-smi --help");
    EXPECT_EQ(fault({"--csv", "--va", "0"}),
              "--csv lists all entries, and excludes --tree, --va, --map and --svg; see nimba-smi "
              "--help");
    EXPECT_EQ(fault({"--svg", "x", "--json"}),
              "--svg and --json exclude each other; see nimba-smi --help");
}

}  // namespace
}  // namespace nimba::smi
