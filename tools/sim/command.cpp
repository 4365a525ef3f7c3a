// SPDX-License-Identifier: MIT
#include "command.hpp"

#include "leftovers.hpp"
#include "test_bed_error.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>

namespace nimba::sim {
namespace {

// The signals that others may send and that end a process unless it does something about them.
constexpr std::array kPassedOn{SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2};

sigset_t passed_on()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kPassedOn) {
        sigaddset(&set, signal);
    }
    return set;
}

// In the new process. Only what is safe after a fork of a process with threads.
[[noreturn]] void become_command(const char* program, char* const* arguments,
                                 char* const* variables, const sigset_t& mask, pid_t parent,
                                 int report)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(kSignalled + SIGKILL);
    }
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    execve(program, arguments, variables);
    const int error = errno;
    const ssize_t written = write(report, &error, sizeof(error));
    _exit(written == sizeof(error) ? kNotExecutable : kSignalled);
}

// Starts the program. Returns its process id; sets `error` to 0, or to the reason why the program
// could not be executed.
pid_t start(const std::string& program, std::vector<std::string> command, Environment& environment,
            const sigset_t& mask, int& error)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    const std::vector<char*> variables = environment.variables();

    std::array<int, 2> report{};  // closes without a word when the program is executed
    if (pipe2(report.data(), O_CLOEXEC) != 0) {
        throw TestBedError{fmt::format("cannot make a pipe: {}", std::strerror(errno))};
    }
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        become_command(program.c_str(), arguments.data(), variables.data(), mask, parent,
                       report[1]);
    }
    const int fork_error = errno;
    close(report[1]);
    if (pid < 0 || read(report[0], &error, sizeof(error)) != sizeof(error)) {
        error = 0;
    }
    close(report[0]);
    if (pid < 0) {
        throw TestBedError{fmt::format("cannot make a process: {}", std::strerror(fork_error))};
    }
    return pid;
}

// Collects the processes that have ended. Returns the command's wait status if it is one of them.
std::optional<int> collect(pid_t command)
{
    std::optional<int> result;
    int status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (pid == command) {
            result = status;
        }
    }
    return result;
}

int wait_for(pid_t command)
{
    sigset_t awaited = passed_on();
    sigaddset(&awaited, SIGCHLD);
    std::optional<int> status;
    while (!(status = collect(command))) {
        siginfo_t info{};
        const int signal = sigwaitinfo(&awaited, &info);
        const bool from_process = info.si_code <= 0;
        if (from_process && signal > 0 && signal != SIGCHLD) {
            kill(command, signal);
        }
    }
    return WIFSIGNALED(*status) ? kSignalled + WTERMSIG(*status) : WEXITSTATUS(*status);
}

}  // namespace

sigset_t hold_signals()
{
    // A parent that ignores SIGCHLD hands that on, and ended children would not be reported.
    signal(SIGCHLD, SIG_DFL);
    sigset_t held = passed_on();
    sigaddset(&held, SIGCHLD);
    sigaddset(&held, SIGPIPE);
    sigset_t before;
    sigprocmask(SIG_BLOCK, &held, &before);
    return before;
}

int run_command(const std::vector<std::string>& command, Environment& environment,
                const sigset_t& mask)
{
    const sigset_t stop = passed_on();
    const timespec at_once{};
    if (const int signal = sigtimedwait(&stop, nullptr, &at_once); signal > 0) {
        return kSignalled + signal;
    }
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const std::string program = find_program(command.front(), environment.get("PATH"));
    int error = 0;
    const pid_t pid = start(program, command, environment, mask, error);
    const int status = wait_for(pid);
    kill_leftovers();
    if (error == 0) {
        return status;
    }
    fmt::print(stderr, "nimba-sim: {}: {}\n", command.front(), std::strerror(error));
    return error == ENOENT ? kNotFound : kNotExecutable;
}

}  // namespace nimba::sim
