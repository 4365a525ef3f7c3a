// SPDX-License-Identifier: MIT
#include "tools/smi/monitor/output.hpp"

#include "tools/smi/process/held_signal.hpp"
#include "tools/smi/text/output.hpp"
#include "tools/smi/watch/problem_log.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <csignal>
#include <cstring>

namespace nimba::smi {
namespace {

// The signal of a reader that has gone waits to end the process, which tells enough.
bool ends_quietly()
{
    sigset_t waiting;
    return !is_ignored(SIGPIPE) && ::sigpending(&waiting) == 0 &&
           ::sigismember(&waiting, SIGPIPE) == 1;
}

}  // namespace

bool MonitorOutput::write(const std::string& text)
{
    if (!watching_) {
        report_.output += text;
        return true;
    }
    const int error = write_all(STDOUT_FILENO, text);
    if (error != 0 && !ends_quietly()) {
        tell({ExitStatus::kFailed, std::nullopt, std::nullopt,
              fmt::format("cannot write to standard output: {}", std::strerror(error))});
    }
    return error == 0;
}

void MonitorOutput::tell(const Problem& problem)
{
    if (!watching_) {
        add_unless_known(report_.problems, problem);
    } else if (add_unless_known(report_.told, problem)) {
        print_error_line(problem.message);
    }
}

bool add_unless_known(std::vector<Problem>& problems, const Problem& problem)
{
    const bool known = std::ranges::any_of(
        problems, [&](const Problem& other) { return is_alike(other, problem); });
    if (!known) {
        problems.push_back(problem);
    }
    return !known;
}

}  // namespace nimba::smi
