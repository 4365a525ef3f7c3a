// SPDX-License-Identifier: MIT
#include "command.hpp"

#include "exit_status.hpp"
#include "leftovers.hpp"
#include "message.hpp"
#include "signals.hpp"
#include "test_bed_error.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace nimba::sim {
namespace {

// What execve takes; made before the fork.
struct Execution {
    std::string program;
    std::vector<char*> arguments;
    std::vector<char*> shell_arguments;  // run the program as a script
    std::vector<char*> variables;
};

constexpr const char* kShell = "/bin/sh";

// In the new process. Only what is safe after a fork of a process with threads.
[[noreturn]] void become_command(const Execution& execution, const Inheritance& inheritance,
                                 pid_t parent, int report)
{
    end_with_parent(parent);
    restore(inheritance);
    execve(execution.program.c_str(), execution.arguments.data(), execution.variables.data());
    if (errno == ENOEXEC) {
        execve(kShell, execution.shell_arguments.data(), execution.variables.data());
    }
    const int error = errno;
    const ssize_t written = write(report, &error, sizeof(error));
    _exit(written == sizeof(error) ? kNotExecutable : kSignalled);
}

// Starts the program. Returns its process id; sets `error` to 0, or to the reason why the program
// could not be executed.
pid_t start(const Execution& execution, const Inheritance& inheritance, int& error)
{
    std::array<int, 2> report{};  // closes without a word when the program is executed
    if (pipe2(report.data(), O_CLOEXEC) != 0) {
        throw TestBedError{fmt::format("cannot make a pipe: {}", std::strerror(errno))};
    }
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        become_command(execution, inheritance, parent, report[1]);
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

}  // namespace

int run_command(const std::vector<std::string>& command, Environment& environment,
                const Inheritance& inheritance, pid_t starter)
{
    if (const auto signal = take_pending_signal()) {
        return kSignalled + *signal;
    }
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    Execution execution;
    execution.program = find_program(command.front(), environment.get("PATH"));
    std::vector<std::string> words = command;
    std::string shell = kShell;
    execution.shell_arguments = {shell.data(), execution.program.data()};
    for (std::string& word : words) {
        execution.arguments.push_back(word.data());
    }
    execution.arguments.push_back(nullptr);
    execution.shell_arguments.insert(execution.shell_arguments.end(),
                                     execution.arguments.begin() + 1, execution.arguments.end());
    execution.variables = environment.variables();

    int error = 0;
    const int status = wait_for_child(start(execution, inheritance, error), starter);
    kill_leftovers();
    if (error != 0) {
        complain(fmt::format("{}: {}", command.front(), std::strerror(error)));
        return error == ENOENT ? kNotFound : kNotExecutable;
    }
    return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace nimba::sim
