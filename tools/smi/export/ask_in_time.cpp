// SPDX-License-Identifier: MIT
#include "tools/smi/export/ask_in_time.hpp"

#include "tools/smi/export/deadline.hpp"

#include <poll.h>

#include <algorithm>
#include <utility>
#include <variant>

namespace nimba::smi::exporting {
namespace {

using std::chrono::milliseconds;

// What everything gets behind a stop: see Patience.
constexpr milliseconds kLastPatience{1000};

bool is_readable(int descriptor)
{
    pollfd state{descriptor, POLLIN, 0};
    return descriptor >= 0 && ::poll(&state, 1, 0) > 0;
}

// When the last patience begins.
milliseconds stop_behind(const TimeLimit& limit)
{
    return limit.overtime == Overtime::kNone ? limit.deadline - kLastPatience : limit.deadline;
}

}  // namespace

ReplyInTime ask_in_time(WorkerProcess& worker, std::string_view request, const TimeLimit& limit,
                        int stop)
{
    const Deadline deadline{stop_behind(limit), stop};
    ReplyInTime answer{ask_all({&worker, 1}, request, {limit.call, deadline.descriptor()}).front()};
    auto* const lost = std::get_if<Lost>(&answer.reply);
    if (lost != nullptr && lost->how == kInterrupted) {
        answer.interrupted = is_readable(stop);
        if (!answer.interrupted) {
            lost->how = no_answer_within(limit.told);
        }
        lost->silent = true;
    }
    return answer;
}

}  // namespace nimba::smi::exporting
