// SPDX-License-Identifier: MIT
// A question to a worker, with a bound on the whole answer.
#pragma once

#include "tools/smi/process/ask.hpp"
#include "tools/smi/process/worker_process.hpp"

#include <chrono>
#include <cstdint>
#include <string_view>

namespace nimba::smi::exporting {

// What happens at the deadline.
enum class Overtime : uint8_t {
    kNone,       // the worker is lost
    kOneSecond,  // it has one more second, as its loss costs more than the time
};

struct TimeLimit {
    std::chrono::milliseconds call{};      // for each call, at most `deadline`
    std::chrono::milliseconds deadline{};  // for the answer
    std::chrono::milliseconds told{};      // what a worker is said to have had that is lost by then
    Overtime overtime = Overtime::kNone;
};

struct ReplyInTime {
    Reply reply;
    bool interrupted = false;  // the worker is lost because the user wants to end
};

// `stop`: see Patience. Throws std::system_error when the process has no descriptors left.
ReplyInTime ask_in_time(WorkerProcess& worker, std::string_view request, const TimeLimit& limit,
                        int stop);

}  // namespace nimba::smi::exporting
