// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"
#include "tools/smi/dvfs/command_options.hpp"

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
    {"dvfs", "Settings", nothing, add_dvfs_options, dvfs_options_fault}};

ParsedCommandLine parse(std::initializer_list<const char*> words)
{
    std::vector<const char*> arguments{"nimba-smi", "dvfs"};
    arguments.insert(arguments.end(), words);
    return parse_command_line(static_cast<int>(arguments.size()), arguments.data(), kCommands);
}

Options options(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const invocation = std::get_if<Invocation>(&parsed);
    return invocation == nullptr ? Options{} : invocation->options;
}

std::string fault(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const error = std::get_if<UsageError>(&parsed);
    return error == nullptr ? "accepted" : error->message;
}

TEST(DvfsOptions, OfGet)
{
    EXPECT_EQ(options({"get"}).dvfs.action, DvfsAction::kGet);
    EXPECT_TRUE(options({"get"}).dvfs.fields.empty());
    const Options two =
        options({"get", "dvfs_level", "--adapter", "1", "gfx_clock", "dvfs_level", "--csv"});
    EXPECT_EQ(two.dvfs.fields,
              (std::vector<const DvfsField*>{find_field("dvfs_level"), find_field("gfx_clock")}));
    EXPECT_EQ(two.adapter, AdapterChoice{1});
    EXPECT_TRUE(two.csv);
    EXPECT_EQ(fault({"get", "dvfs_level", "speed"}),
              "FIELD: there is no field \"speed\"; nimba-smi dvfs get shows all; see nimba-smi "
              "--help");
    EXPECT_EQ(fault({"get", "--csv", "--json"}),
              "--csv and --json exclude each other; see nimba-smi --help");
}

TEST(DvfsOptions, OfSetAreInTheOrderOfWriting)
{
    const Options two =
        options({"--adapter", "0", "set", "gfx_clock=-5", "dvfs_level=1", "--dry-run", "--json"});
    EXPECT_EQ(two.dvfs.action, DvfsAction::kSet);
    EXPECT_EQ(two.dvfs.assignments, (std::vector<Assignment>{{find_field("dvfs_level"), 1},
                                                             {find_field("gfx_clock"), -5}}));
    EXPECT_TRUE(two.dvfs.dry_run);
    EXPECT_TRUE(two.json);
    EXPECT_EQ(two.adapter, AdapterChoice{0});
}

TEST(DvfsOptions, OfSetAreRefusedAllTogether)
{
    EXPECT_EQ(fault({"set"}), "FIELD=VALUE is required; see nimba-smi --help");
    EXPECT_EQ(fault({"set", "dvfs_level=1", "video_clock=1"}),
              "FIELD=VALUE: video_clock can only be read; see nimba-smi --help");
    EXPECT_EQ(
        fault({"set", "dvfs_level=1", "dvfs_mode=0x100000000"}),
        "FIELD=VALUE: dvfs_mode: expected a number from 0 to 0xffffffff, got \"0x100000000\"; see "
        "nimba-smi --help");
    EXPECT_EQ(fault({"set", "dvfs_level=1", "dvfs_level=1"}),
              "dvfs_level is set twice; see nimba-smi --help");
    EXPECT_NE(fault({"set", "dvfs_level=1", "--csv"}), "accepted");
}

TEST(DvfsOptions, OfSaveAndRestore)
{
    EXPECT_EQ(options({"save", "a.json"}).dvfs.action, DvfsAction::kSave);
    EXPECT_EQ(options({"save", "a.json"}).dvfs.file, "a.json");
    EXPECT_EQ(options({"save", "-"}).dvfs.file, "-");
    const Options restore = options({"restore", "a.json", "--force", "--dry-run"});
    EXPECT_EQ(restore.dvfs.action, DvfsAction::kRestore);
    EXPECT_EQ(restore.dvfs.file, "a.json");
    EXPECT_TRUE(restore.dvfs.force);
    EXPECT_TRUE(restore.dvfs.dry_run);
    EXPECT_EQ(fault({"save"}), "FILE is required; see nimba-smi --help");
    EXPECT_EQ(fault({"save", ""}),
              "FILE: expected a file (./-x for one that begins with \"-\"), got \"\"; see "
              "nimba-smi --help");
    EXPECT_EQ(fault({"save", "-", "--json"}),
              "save - and --json exclude each other; see nimba-smi --help");
    EXPECT_NE(fault({"save", "a.json", "--force"}), "accepted");
    EXPECT_NE(fault({"restore", "a.json", "b.json"}), "accepted");
}

TEST(DvfsOptions, NeedOneOfTheFour)
{
    EXPECT_EQ(fault({}), "dvfs needs get, set, save or restore; see nimba-smi --help");
    EXPECT_NE(fault({"put"}), "accepted");
    EXPECT_NE(fault({"get", "set", "dvfs_level=1"}), "accepted");
}

}  // namespace
}  // namespace nimba::smi
