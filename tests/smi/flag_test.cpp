// SPDX-License-Identifier: MIT
#include "tools/smi/command_line.hpp"
#include "tools/smi/flag/command_options.hpp"
#include "tools/smi/flag/render.hpp"
#include "tools/smi/text/json.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace nimba::smi {
namespace {

Report nothing(const Options& /*options*/)
{
    return {};
}

constexpr Command kCommands[] = {{"flag", "Flag", nothing, add_flag_options, flag_options_fault}};

ParsedCommandLine parse(std::initializer_list<const char*> words)
{
    std::vector<const char*> arguments{"nimba-smi", "flag"};
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

const SlotIdentity kAdapter{0, "0000:01:00.0", "Gpu0:Nimba-K1"};

TEST(FlagBits, AreOneToThirtyTwo)
{
    EXPECT_EQ(parse_bits("1"), 1U);
    EXPECT_EQ(parse_bits("0x10"), 16U);
    EXPECT_EQ(parse_bits("0xFFFFFFFF"), 4294967295U);
    EXPECT_EQ(parse_bits("4294967295"), 4294967295U);
    for (const char* text :
         {"", "0", "0x0", "-1", "0x100000000", "4294967296", "0x", "x1", "1,2", " 1"}) {
        EXPECT_EQ(parse_bits(text), std::nullopt) << text;
    }
}

TEST(FlagOptions, AreTaken)
{
    EXPECT_EQ(options({"get"}).flag.action, FlagAction::kGet);
    EXPECT_EQ(options({"set", "0x10"}).flag.action, FlagAction::kSet);
    EXPECT_EQ(options({"set", "0x10"}).flag.bits, 16U);
    const Options clear = options({"clear", "--adapter", "2", "3"});
    EXPECT_EQ(clear.flag.action, FlagAction::kClear);
    EXPECT_EQ(clear.flag.bits, 3U);
    EXPECT_EQ(clear.adapter, AdapterChoice{2});
}

TEST(FlagOptions, AreRefusedWhenTheyMakeNoSense)
{
    EXPECT_EQ(fault({}), "flag needs get, set or clear; see nimba-smi --help");
    EXPECT_EQ(fault({"set"}), "BITS is required; see nimba-smi --help");
    EXPECT_EQ(fault({"clear", "0"}),
              "BITS: expected bits from 1 to 0xffffffff, got \"0\"; see nimba-smi --help");
    EXPECT_NE(fault({"set", "1", "2"}), "accepted");
    EXPECT_NE(fault({"get", "1"}), "accepted");
}

TEST(FlagFaces, ShowTheFlagOfEachAdapter)
{
    const FlagSnapshot snapshot{
        {{kAdapter, {"0000:01:00.0", 0x80000010, {}}},
         {{1, "0000:02:00.0", std::nullopt}, {"0000:02:00.0", std::nullopt, {}}}},
        {}};
    EXPECT_EQ(flag_text(snapshot), "SLOT  FLAG\n0     0x80000010\n1     not available\n");
    EXPECT_EQ(Document::parse(flag_json(snapshot)).dump(),
              R"({"schema":"nimba-smi.flag.1","adapters":[)"
              R"({"slot":0,"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0","flag":2147483664},)"
              R"({"slot":1,"name":null,"bus_id":"0000:02:00.0","flag":null}],"errors":[]})");
    EXPECT_EQ(flag_text({}), "");
}

TEST(FlagFaces, TellWhatBecameOfTheBits)
{
    const FlagChange change{kAdapter, FlagOutcome{1, 17, 1, Verdict::kRejected}, {}};
    EXPECT_EQ(flag_change_text(change),
              "BEFORE  ASKED  RESULT\n0x1     0x11   rejected: still 0x1\n");
    EXPECT_EQ(Document::parse(flag_change_json(change)).dump(),
              R"({"schema":"nimba-smi.flag-set.1",)"
              R"("adapter":{"slot":0,"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0"},)"
              R"("before":1,"asked":17,"after":1,"result":"rejected","errors":[]})");
    EXPECT_EQ(flag_change_text({}), "");
    EXPECT_EQ(Document::parse(flag_change_json({})).dump(),
              R"({"schema":"nimba-smi.flag-set.1","adapter":null,"before":null,"asked":null,)"
              R"("after":null,"result":null,"errors":[]})");
}

TEST(FlagReading, TravelsAndComesBack)
{
    const FlagWriting writing{"0000:01:00.0",
                              {"0000:01:00.0", 1, {"misc_ctl_flag", "/info/misc_ctl_flag", 0, 13}},
                              {"0000:01:00.0", std::nullopt, {}}};
    EXPECT_EQ(payload_from<FlagWriting>(to_json_value(writing)), writing);
    EXPECT_EQ(payload_from<FlagReading>(to_json_value(writing.before)), writing.before);
    EXPECT_EQ(payload_from<FlagReading>(nlohmann::json::parse(R"({"flag": 1})")), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
