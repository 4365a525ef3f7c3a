// SPDX-License-Identifier: MIT
#include "tools/smi/process/diagnosis.hpp"

#include <fmt/format.h>

namespace nimba::smi {
namespace {

constexpr std::string_view kSilentAdvice =
    "the driver may be blocked: see dmesg, or allow more with --timeout";
constexpr std::string_view kDeadAdvice = "run with --verbose to see the library's last messages";

Problem lost_worker(const Subject& subject, const Lost& lost)
{
    return {ExitStatus::kWorkerLost, subject.bus_id, lost.call,
            fmt::format("{}: worker lost in {}: {}; {}", subject.name, lost.call, lost.how,
                        lost.silent ? kSilentAdvice : kDeadAdvice)};
}

}  // namespace

Subject adapter_subject(const SlotIdentity& identity)
{
    std::string name = "adapter " + identity.bus_id;
    if (identity.name) {
        name += fmt::format(" ({})", *identity.name);
    }
    return {std::move(name), identity.bus_id};
}

std::optional<Problem> diagnose(const Subject& subject, const Reply& reply)
{
    if (const auto* const lost = std::get_if<Lost>(&reply)) {
        return lost_worker(subject, *lost);
    }
    if (const auto* const failure = std::get_if<Failure>(&reply)) {
        if (failure->status == ExitStatus::kWorkerLost) {
            return lost_worker(subject, {failure->call, failure->message});
        }
        const std::string whose = subject.bus_id ? subject.name + ": " : "";
        return Problem{failure->status, subject.bus_id, failure->call, whose + failure->message};
    }
    return std::nullopt;
}

}  // namespace nimba::smi
