// SPDX-License-Identifier: MIT
#include "tools/smi/flag/command_options.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/dvfs/command_options.hpp"
#include "tools/smi/option_value.hpp"
#include "tools/smi/pagetable/number.hpp"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <limits>
#include <string>

namespace nimba::smi {
namespace {

void add_bits(CLI::App& app, FlagOptions& flag)
{
    const auto fault = [](const std::string& text) {
        return parse_bits(text)
                   ? std::string{}
                   : fmt::format("expected bits from 1 to 0xffffffff, got \"{}\"", text);
    };
    app.add_option_function<std::string>(
           "BITS", [&flag](const std::string& text) { flag.bits = *parse_bits(text); },
           "The bits, as a number such as 0x10 or 16")
        ->required()
        ->check(CLI::Validator{fault, ""});
}

}  // namespace

std::optional<uint32_t> parse_bits(std::string_view text)
{
    constexpr uint64_t kLargest = std::numeric_limits<uint32_t>::max();
    const auto number =
        text.starts_with("0x") ? hexadecimal_in(text) : parse_number<uint64_t>(text, 1, kLargest);
    return number && *number >= 1 && *number <= kLargest
               ? std::optional(static_cast<uint32_t>(*number))
               : std::nullopt;
}

void add_flag_options(CLI::App& command, Options& options)
{
    FlagOptions& flag = options.flag;
    add_settings_adapter_option(command, options);
    add_action(command, "get", "Show the flag of the adapters", flag.action, FlagAction::kGet);
    add_bits(
        add_action(command, "set", "Set bits of an adapter's flag", flag.action, FlagAction::kSet),
        flag);
    add_bits(add_action(command, "clear", "Clear bits of an adapter's flag", flag.action,
                        FlagAction::kClear),
             flag);
}

const char* flag_options_fault(const Options& options)
{
    return options.flag.action == FlagAction::kNone ? "flag needs get, set or clear" : "";
}

}  // namespace nimba::smi
