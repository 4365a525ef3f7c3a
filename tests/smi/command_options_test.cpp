// SPDX-License-Identifier: MIT
// The options that single commands take.
#include "tools/smi/alloc/command_options.hpp"

#include "tools/smi/command_line.hpp"
#include "tools/smi/leaks/command_options.hpp"
#include "tools/smi/memory/command_options.hpp"
#include "tools/smi/monitor/command_options.hpp"

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

constexpr Command kCommands[] = {
    {"list", "Lists", nothing},
    {"ps", "Sums", nothing, add_memory_options, memory_options_fault},
    {"alloc", "Allocations", nothing, add_alloc_options, memory_options_fault},
    {"leaks", "Leaks", nothing, add_leaks_options, leaks_options_fault},
    {"clocks", "Clocks", nothing, add_monitor_options, monitor_options_fault},
    {"usage", "Usage", nothing, add_usage_options, monitor_options_fault},
};

ParsedCommandLine parse(std::initializer_list<const char*> words)
{
    std::vector<const char*> arguments{"nimba-smi"};
    arguments.insert(arguments.end(), words);
    return parse_command_line(static_cast<int>(arguments.size()), arguments.data(), kCommands);
}

Options options(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const invocation = std::get_if<Invocation>(&parsed);
    EXPECT_NE(invocation, nullptr);
    return invocation == nullptr ? Options{} : invocation->options;
}

std::string usage_error(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const error = std::get_if<UsageError>(&parsed);
    return error == nullptr ? "accepted" : error->message;
}

TEST(MemoryOptions, HaveDefaults)
{
    const Options ps = options({"ps"});
    EXPECT_FALSE(ps.csv);
    EXPECT_EQ(ps.adapter, std::nullopt);
    EXPECT_EQ(ps.top, std::nullopt);
}

TEST(MemoryOptions, AreRead)
{
    for (const char* const command : {"ps", "alloc", "leaks"}) {
        const Options read = options({command, "--adapter", "af:00.0", "--csv", "--top", "7"});
        EXPECT_EQ(read.adapter, AdapterChoice{"0000:af:00.0"});
        EXPECT_TRUE(read.csv);
        EXPECT_EQ(read.top, 7U);
    }
}

TEST(MemoryOptions, AreChecked)
{
    EXPECT_EQ(usage_error({"ps", "--adapter", "3"}),
              "--adapter: expected a slot from 0 to 2 or a bus id such as 0000:01:00.0, got \"3\"; "
              "see nimba-smi --help");
    for (const char* const rows : {"0", "-1", "x", "1x", "99999999999999999999"}) {
        EXPECT_EQ(usage_error({"ps", "--top", rows}),
                  std::string{"--top: expected a number of rows from 1 on, got \""} + rows +
                      "\"; see nimba-smi --help");
    }
    EXPECT_EQ(usage_error({"ps", "--csv", "--json"}),
              "--csv and --json exclude each other; see nimba-smi --help");
    EXPECT_EQ(usage_error({"--json", "alloc", "--csv"}),
              "--csv and --json exclude each other; see nimba-smi --help");
}

TEST(MemoryOptions, BelongToTheirCommands)
{
    EXPECT_EQ(usage_error({"list", "--csv"}),
              "list has no option --csv; see nimba-smi list --help");
    EXPECT_NE(usage_error({"ps", "--sort", "size"}), "accepted");
    EXPECT_NE(usage_error({"ps", "--interval", "1"}), "accepted");
    EXPECT_NE(usage_error({"alloc", "--count", "1"}), "accepted");
    EXPECT_NE(usage_error({"leaks", "--pid", "1"}), "accepted");
    EXPECT_NE(usage_error({"--top", "1", "ps"}), "accepted");
}

TEST(AllocOptions, AreRead)
{
    EXPECT_EQ(options({"alloc"}).alloc.sort, (SortOrder{SortKey::kSize, true}));
    EXPECT_EQ(options({"alloc"}).alloc.filter, AllocationFilter{});
    const Options read = options({"alloc", "--sort", "pid:desc", "--pid", "41", "--process", "maze",
                                  "--device", "0x1f", "--segment", "-1", "--min-size", "4KiB"});
    EXPECT_EQ(read.alloc.sort, (SortOrder{SortKey::kPid, true}));
    EXPECT_EQ(read.alloc.filter, (AllocationFilter{41, "maze", 31, -1, 4096}));
}

TEST(AllocOptions, AreChecked)
{
    EXPECT_EQ(usage_error({"alloc", "--sort", "size:up"}),
              "--sort: expected slot, handle, device, pid, process, size, segment, width, height, "
              "format or type, then nothing, :asc or :desc, got \"size:up\"; see nimba-smi --help");
    EXPECT_NE(usage_error({"alloc", "--pid", "x"}), "accepted");
    EXPECT_NE(usage_error({"alloc", "--device", "0x100000000"}), "accepted");
    EXPECT_NE(usage_error({"alloc", "--segment", "2147483648"}), "accepted");
    EXPECT_EQ(
        usage_error({"alloc", "--min-size", "4KB"}),
        "--min-size: expected a size such as 4096, 4KiB or 1.5MiB, got \"4KB\"; see nimba-smi "
        "--help");
}

TEST(SortOrderText, HasAKeyAndMaybeADirection)
{
    EXPECT_EQ(parse_sort_order("width"), (SortOrder{SortKey::kWidth, true}));
    EXPECT_EQ(parse_sort_order("width:asc"), (SortOrder{SortKey::kWidth, false}));
    EXPECT_EQ(parse_sort_order("handle"), (SortOrder{SortKey::kHandle, false}));
    EXPECT_EQ(parse_sort_order("slot:desc"), (SortOrder{SortKey::kSlot, true}));
    for (const char* const text : {"", ":asc", "size:", "size:ASC", "weight", "size:asc:desc"}) {
        EXPECT_EQ(parse_sort_order(text), std::nullopt) << text;
    }
}

TEST(DeviceText, IsHexadecimalWithItsPrefixElseDecimal)
{
    EXPECT_EQ(parse_device("0x1F"), 31U);
    EXPECT_EQ(parse_device("31"), 31U);
    EXPECT_EQ(parse_device("0xffffffff"), 4294967295U);
    for (const char* const text : {"", "0x", "1f", "-1", "0x100000000", "4294967296", "0x-1"}) {
        EXPECT_EQ(parse_device(text), std::nullopt) << text;
    }
}

TEST(LeaksOptions, AreRead)
{
    const LeaksOptions defaults = options({"leaks"}).leaks;
    EXPECT_EQ(defaults.interval, 1s);
    EXPECT_EQ(defaults.count, std::nullopt);
    EXPECT_EQ(defaults.fail_on_growth, std::nullopt);
    const LeaksOptions read =
        options({"leaks", "--interval", "0.01", "--count", "2", "--fail-on-growth", "5"}).leaks;
    EXPECT_EQ(read.interval, 10ms);
    EXPECT_EQ(read.count, 2U);
    EXPECT_EQ(read.fail_on_growth, 5U);
    EXPECT_EQ(options({"leaks", "--interval", "86400"}).leaks.interval, 24h);
}

TEST(LeaksOptions, NeedTwoSnapshotsForGrowth)
{
    EXPECT_EQ(usage_error({"leaks", "--count", "1", "--fail-on-growth", "1"}),
              "--fail-on-growth needs two snapshots at least: --count 2 or more; see nimba-smi "
              "--help");
    EXPECT_EQ(usage_error({"leaks", "--fail-on-growth", "1"}), "accepted");
    EXPECT_EQ(usage_error({"leaks", "--count", "1"}), "accepted");
}

TEST(MonitorOptions, AreSingleSamplesUnlessToldOtherwise)
{
    const MonitorOptions usual = options({"clocks"}).monitor;
    EXPECT_EQ(usual.watch, std::nullopt);
    EXPECT_EQ(usual.count, std::nullopt);
    const MonitorOptions watch =
        options({"clocks", "--watch", "0.5", "--count", "4", "--adapter", "1"}).monitor;
    EXPECT_EQ(watch.watch, 500ms);
    EXPECT_EQ(watch.count, 4U);
    EXPECT_EQ(options({"usage", "--interval", "2"}).monitor.interval, 2000ms);
}

TEST(MonitorOptions, ThatMakeNoSenseTogetherAreRefused)
{
    EXPECT_EQ(usage_error({"clocks", "--count", "2"}),
              "--count needs --watch; see nimba-smi --help");
    EXPECT_EQ(usage_error({"usage", "--watch", "1", "--interval", "1"}),
              "--interval and --watch exclude each other; see nimba-smi --help");
    EXPECT_EQ(usage_error({"clocks", "--csv", "--json"}),
              "--csv and --json exclude each other; see nimba-smi --help");
    EXPECT_EQ(usage_error({"clocks", "--watch", "0.001"}),
              "--watch: expected seconds from 0.01 to 86400, got \"0.001\"; see nimba-smi --help");
    EXPECT_EQ(usage_error({"clocks", "--watch", "1", "--count", "0"}),
              "--count: expected a number of samples from 1 on, got \"0\"; see nimba-smi --help");
    EXPECT_NE(usage_error({"clocks", "--interval", "1"}), "accepted");
}

}  // namespace
}  // namespace nimba::smi
