// SPDX-License-Identifier: MIT
// Questions to workers, with a bound on every call that a worker makes.
#pragma once

#include "tools/smi/process/worker_process.hpp"
#include "tools/smi/worker/message.hpp"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nimba::smi {

// How a worker was lost that was given up because the user wanted to end.
inline constexpr const char* kInterrupted = "interrupted";

// The worker died, fell silent or spoke nonsense.
struct Lost {
    std::string call;     // the call that it was in
    std::string how;      // "killed by SIGABRT", "exit status 3", "no answer within 10 s"
    bool silent = false;  // it had to be given up
    std::string said{};   // what it wrote on standard error in that call, its last line

    bool operator==(const Lost&) const = default;
};

using Reply = std::variant<Answer, Failure, Lost>;

// How long workers are waited for.
struct Patience {
    std::chrono::milliseconds timeout{};  // for each of their calls
    int stop = -1;  // a descriptor that becomes readable when the user wants to end; then there is
                    // one more second for everything
};

// Sends `request` to all workers at the same time and waits for every reply. A worker that stays in
// one call for too long is killed. Replies come in the order of the workers.
std::vector<Reply> ask_all(std::span<WorkerProcess> workers, std::string_view request,
                           Patience patience);

// "no answer within 2.5 s"
std::string no_answer_within(std::chrono::milliseconds timeout);

}  // namespace nimba::smi
