// SPDX-License-Identifier: MIT
// What workers found out of one part, each in a process of its own: one that blocks or dies costs
// its part alone.
#pragma once

#include "tools/smi/doctor/check.hpp"
#include "tools/smi/doctor/library_checks.hpp"
#include "tools/smi/memory/ask_adapters.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/diagnosis.hpp"
#include "tools/smi/worker/payload.hpp"
#include "tools/smi/worker/requests.hpp"

#include <fmt/core.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace nimba::smi {

// The facts, or why there are none.
template <typename Facts>
using Part = std::variant<Facts, Problem>;

template <typename Facts>
Part<Facts> facts_in(const Subject& subject, const Reply& reply)
{
    std::vector<Problem> problems;
    auto facts = accept<Facts>(subject, reply, problems);
    if (!facts) {
        return std::move(problems.front());
    }
    return *std::move(facts);
}

// A part of the machine or of the user.
template <typename Facts>
Part<Facts> machine_part(const Options& options, std::string_view part)
{
    WorkerProcess worker{{options.library, options.verbose, std::nullopt}};
    const std::string request = fmt::format("{} {}", kDoctorMachineRequest, part);
    return facts_in<Facts>({std::string{part}, std::nullopt},
                           ask_all({&worker, 1}, request, {options.timeout}).front());
}

// A part of each of the adapters, all asked at the same time.
template <typename Facts>
std::vector<Part<Facts>> adapter_part(const Options& options, std::span<const SlotIdentity> slots,
                                      std::string_view part)
{
    auto workers = start_workers(options, slots);
    const auto replies =
        ask_all(workers, fmt::format("{} {}", kDoctorAdapterRequest, part), {options.timeout});
    std::vector<Part<Facts>> parts;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        parts.push_back(facts_in<Facts>(adapter_subject(slots[i]), replies[i]));
    }
    return parts;
}

// What `check` makes of the facts; without them a check that fails for that reason.
template <typename Facts, typename Function>
Check check_of(const char* id, const Part<Facts>& part, Function check)
{
    const auto* const facts = std::get_if<Facts>(&part);
    return facts != nullptr ? check(*facts) : unanswered_check(id, std::get<Problem>(part));
}

// The same for several checks, of which `id` is the first.
template <typename Facts, typename Function>
std::vector<Check> checks_of(const char* id, const Part<Facts>& part, Function checks)
{
    const auto* const facts = std::get_if<Facts>(&part);
    return facts != nullptr ? checks(*facts)
                            : std::vector{unanswered_check(id, std::get<Problem>(part))};
}

}  // namespace nimba::smi
