// SPDX-License-Identifier: MIT
#include "tools/smi/process/diagnosis.hpp"

#include <fmt/core.h>

namespace nimba::smi {
namespace {

constexpr std::string_view kSilentAdvice =
    "the driver may be blocked: see dmesg, or allow more with --timeout";
constexpr std::string_view kDeadAdvice = "run with --verbose to see the library's last messages";

// A worker that was lost before its first call had nothing to do with the library or the driver.
constexpr std::string_view kSilentStartAdvice =
    "the machine may be overloaded: allow more with --timeout";
constexpr std::string_view kDeadStartAdvice =
    "nimba-smi could not run itself: check the limits of this session (ulimit -a)";

std::string advice(const Lost& lost)
{
    if (lost.call == kStartCall) {
        return std::string{lost.silent ? kSilentStartAdvice : kDeadStartAdvice};
    }
    if (!lost.silent && !lost.said.empty()) {
        return fmt::format("it said \"{}\"", lost.said);
    }
    return std::string{lost.silent ? kSilentAdvice : kDeadAdvice};
}

Problem lost_worker(const Subject& subject, const Lost& lost)
{
    const std::string place = subject.at ? " at adapter " + *subject.at : "";
    return {ExitStatus::kWorkerLost, subject.at ? subject.at : subject.bus_id, lost.call,
            fmt::format("{}: worker lost in {}{}: {}; {}", subject.name, lost.call, place, lost.how,
                        advice(lost))};
}

}  // namespace

Subject adapter_subject(const SlotIdentity& identity)
{
    std::string name = "adapter " + identity.bus_id;
    if (identity.name) {
        name += fmt::format(" ({})", *identity.name);
    }
    return {std::move(name), identity.bus_id, std::nullopt};
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
