// SPDX-License-Identifier: MIT
#include "tools/smi/memory/adapter_choice.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/smi/process/discovery_problems.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <iterator>

namespace nimba::smi {
namespace {

constexpr std::string_view kForm = "dddd:bb:dd.f";
constexpr std::string_view kShortForm = "bb:dd.f";

// Whether `text` has a hexadecimal digit for each letter of `form`, and otherwise what it has.
bool has_form(std::string_view text, std::string_view form)
{
    return std::ranges::equal(text, form, [](unsigned char c, unsigned char in_form) {
        return std::isalpha(in_form) != 0 ? std::isxdigit(c) != 0 : c == in_form;
    });
}

std::string in_small_letters(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

bool is_chosen(const SlotIdentity& identity, const AdapterChoice& choice)
{
    const int* const slot = std::get_if<int>(&choice);
    return slot != nullptr ? identity.slot == *slot
                           : identity.bus_id == std::get<std::string>(choice);
}

Problem not_found(const AdapterChoice& choice)
{
    const int* const slot = std::get_if<int>(&choice);
    const std::string which =
        slot != nullptr ? fmt::format("in slot {}", *slot) : "at " + std::get<std::string>(choice);
    return {
        ExitStatus::kNoAdapter, std::nullopt, "gfx_find_adapter",
        fmt::format("there is no adapter {}; nimba-smi list shows those that are there", which)};
}

}  // namespace

std::optional<AdapterChoice> parse_adapter_choice(std::string_view text)
{
    if (text.size() == 1 && text.front() >= '0' && text.front() < '0' + MAX_CHIP_NUM) {
        return text.front() - '0';
    }
    if (has_form(text, kForm)) {
        return in_small_letters(std::string{text});
    }
    if (has_form(text, kShortForm)) {
        return in_small_letters("0000:" + std::string{text});
    }
    return std::nullopt;
}

std::vector<SlotIdentity> chosen_adapters(const Discovery& discovery,
                                          const std::optional<AdapterChoice>& choice,
                                          std::vector<Problem>& problems)
{
    std::vector<SlotIdentity> chosen;
    std::ranges::copy_if(discovery.slots, std::back_inserter(chosen), [&](const auto& identity) {
        return !choice || is_chosen(identity, *choice);
    });
    if (choice && !chosen.empty()) {
        return chosen;
    }
    std::ranges::move(discovery_problems(discovery), std::back_inserter(problems));
    if (choice && !discovery.slots.empty()) {
        problems.push_back(not_found(*choice));
    }
    return chosen;
}

}  // namespace nimba::smi
