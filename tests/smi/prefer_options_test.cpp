// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"
#include "tools/smi/prefer/command_options.hpp"

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
    {"prefer", "Prefer", nothing, add_prefer_options, prefer_options_fault}};

ParsedCommandLine parse(std::initializer_list<const char*> words)
{
    std::vector<const char*> arguments{"nimba-smi", "prefer"};
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

std::string fault(std::initializer_list<const char*> words)
{
    const auto parsed = parse(words);
    const auto* const error = std::get_if<UsageError>(&parsed);
    return error == nullptr ? "accepted" : error->message;
}

TEST(PreferOptions, OfListAreItsForms)
{
    EXPECT_EQ(options({"list"}).prefer.action, PreferAction::kList);
    EXPECT_FALSE(options({"list"}).csv);
    EXPECT_TRUE(options({"list", "--csv"}).csv);
    EXPECT_TRUE(options({"list", "--json"}).json);
    EXPECT_EQ(fault({"list", "--csv", "--json"}),
              "--csv and --json exclude each other; see nimba-smi --help");
    EXPECT_NE(fault({"list", "maze"}), "accepted");
}

TEST(PreferOptions, OfSetAreApplicationGpuAndValue)
{
    const PreferOptions usual = options({"set", "/usr/bin/maze", "--gpu", "AF:00.0"}).prefer;
    EXPECT_EQ(usual.action, PreferAction::kSet);
    EXPECT_EQ(usual.application, "/usr/bin/maze");
    EXPECT_EQ(usual.gpu, AdapterChoice{"0000:af:00.0"});
    EXPECT_EQ(usual.value, 1);
    EXPECT_EQ(options({"set", "maze", "--gpu", "2"}).prefer.gpu, AdapterChoice{2});
    EXPECT_EQ(options({"set", "maze", "--gpu", "0", "--value", "2147483647"}).prefer.value,
              2147483647);
    EXPECT_EQ(options({"set", "maze", "--gpu", "0", "--value=-2147483648"}).prefer.value,
              -2147483647 - 1);
    EXPECT_EQ(options({"set", "maze", "--gpu", "0", "--value", "-3"}).prefer.value, -3);
}

TEST(PreferOptions, OfSetAreRefusedWhenTheyMakeNoSense)
{
    EXPECT_EQ(fault({"set", "maze"}),
              "prefer set needs --gpu; nimba-smi list shows the GPUs; see nimba-smi --help");
    EXPECT_EQ(fault({"set", "--gpu", "0"}), "APPLICATION is required; see nimba-smi --help");
    EXPECT_EQ(fault({"set", "maze", "--gpu", "3"}),
              "--gpu: expected a slot from 0 to 2 or a bus id such as 0000:01:00.0, got \"3\"; see "
              "nimba-smi --help");
    for (const char* const value : {"", "x", "1x", "2147483648", "-2147483649", "0x1", " 1"}) {
        EXPECT_EQ(fault({"set", "maze", "--gpu", "0", "--value", value}),
                  std::string{"--value: expected a number from -2147483648 to 2147483647, got \""} +
                      value + "\"; see nimba-smi --help");
    }
    EXPECT_NE(fault({"set", "maze", "solver", "--gpu", "0"}), "accepted");
    EXPECT_NE(fault({"set", "maze", "--gpu", "0", "--csv"}), "accepted");
}

TEST(PreferOptions, OfRemoveAreAnApplication)
{
    const PreferOptions remove = options({"remove", "maze"}).prefer;
    EXPECT_EQ(remove.action, PreferAction::kRemove);
    EXPECT_EQ(remove.application, "maze");
    EXPECT_EQ(fault({"remove"}), "APPLICATION is required; see nimba-smi --help");
    EXPECT_NE(fault({"remove", "maze", "--gpu", "0"}), "accepted");
}

TEST(PreferOptions, NeedOneOfTheThree)
{
    EXPECT_EQ(fault({}), "prefer needs list, set or remove; see nimba-smi --help");
    EXPECT_NE(fault({"list", "remove", "maze"}), "accepted");
    EXPECT_NE(fault({"get"}), "accepted");
}

}  // namespace
}  // namespace nimba::smi
