// SPDX-License-Identifier: MIT
// What went wrong, in words for the user.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/process/ask.hpp"
#include "tools/smi/worker/payload.hpp"

#include <optional>
#include <string>
#include <vector>

namespace nimba::smi {

// Whom a worker served.
struct Subject {
    std::string name;                   // how sentences begin: "discovery"
    std::optional<std::string> bus_id;  // when it is an adapter
    std::optional<std::string> at{};    // the adapter that it was at when it was lost
};

// "adapter 0000:03:00.0 (Gpu0:Nimba-K1)", without the name when a foreign GPU hides it.
Subject adapter_subject(const SlotIdentity& identity);

// The problem behind a reply; nothing when the reply is an answer.
std::optional<Problem> diagnose(const Subject& subject, const Reply& reply);

// The answer behind a reply as a value. An answer of another shape, and a reply that is none, adds
// a problem and gives nothing.
template <typename Payload>
std::optional<Payload> accept(const Subject& subject, const Reply& reply,
                              std::vector<Problem>& problems)
{
    if (auto problem = diagnose(subject, reply)) {
        problems.push_back(*std::move(problem));
        return std::nullopt;
    }
    auto payload = payload_from<Payload>(std::get<Answer>(reply).value());
    if (!payload) {
        problems.push_back(*diagnose(subject, Lost{"answer", "it cannot be understood"}));
    }
    return payload;
}

}  // namespace nimba::smi
