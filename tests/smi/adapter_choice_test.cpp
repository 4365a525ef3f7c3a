// SPDX-License-Identifier: MIT
#include "tools/smi/memory/adapter_choice.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

Discovery two_adapters()
{
    Discovery discovery;
    discovery.slots = {{0, "0000:01:00.0", "Gpu0:Nimba-K1"}, {1, "0001:af:00.0", std::nullopt}};
    discovery.denied_nodes = {{"/dev/dri/renderD130", "render"}};
    return discovery;
}

struct Chosen {
    std::vector<std::string> bus_ids;
    std::vector<std::string> messages;
};

Chosen chosen(const Discovery& discovery, const std::optional<AdapterChoice>& choice)
{
    Chosen result;
    std::vector<Problem> problems;
    for (const SlotIdentity& slot : chosen_adapters(discovery, choice, problems)) {
        result.bus_ids.push_back(slot.bus_id);
    }
    for (const Problem& problem : problems) {
        result.messages.push_back(problem.message);
    }
    return result;
}

constexpr const char* kDenied =
    "no permission to open /dev/dri/renderD130: join the group \"render\" or run as root";

TEST(AdapterChoice, IsASlotOrABusId)
{
    EXPECT_EQ(parse_adapter_choice("0"), AdapterChoice{0});
    EXPECT_EQ(parse_adapter_choice("2"), AdapterChoice{2});
    EXPECT_EQ(parse_adapter_choice("0001:AF:1f.7"), AdapterChoice{"0001:af:1f.7"});
    EXPECT_EQ(parse_adapter_choice("af:00.0"), AdapterChoice{"0000:af:00.0"});
    for (const char* const text : {"", "3", "-1", "00", "card0", "1:af:00.0", "0001:af:00",
                                   "0001-af:00.0", "0001:af:00.g", "0001:af:00.0 "}) {
        EXPECT_EQ(parse_adapter_choice(text), std::nullopt) << text;
    }
}

TEST(ChosenAdapters, AreAllWithoutAChoiceAndOthersAreMissed)
{
    const Chosen all = chosen(two_adapters(), std::nullopt);
    EXPECT_EQ(all.bus_ids, (std::vector<std::string>{"0000:01:00.0", "0001:af:00.0"}));
    EXPECT_EQ(all.messages, (std::vector<std::string>{kDenied}));
}

TEST(ChosenAdapters, AreTheOneThatIsMeantAndNoOtherIsMissed)
{
    EXPECT_EQ(chosen(two_adapters(), 1).bus_ids, (std::vector<std::string>{"0001:af:00.0"}));
    EXPECT_TRUE(chosen(two_adapters(), 1).messages.empty());
    EXPECT_EQ(chosen(two_adapters(), "0000:01:00.0").bus_ids,
              (std::vector<std::string>{"0000:01:00.0"}));
}

TEST(ChosenAdapters, AreNoneWhenTheChoiceIsNotThere)
{
    const Chosen none = chosen(two_adapters(), "0000:09:00.0");
    EXPECT_TRUE(none.bus_ids.empty());
    EXPECT_EQ(
        none.messages,
        (std::vector<std::string>{
            kDenied,
            "there is no adapter at 0000:09:00.0; nimba-smi list shows those that are there"}));
    EXPECT_EQ(chosen(Discovery{}, 0).messages,
              (std::vector<std::string>{"no Nimba or QV adapter found: check that the card is "
                                        "seated (lspci) and its driver is loaded (dmesg)"}));
}

}  // namespace
}  // namespace nimba::smi
