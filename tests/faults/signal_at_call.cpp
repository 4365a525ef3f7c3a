// SPDX-License-Identifier: MIT
// signal_at_call SIGNAL NUMBER REPORT COMMAND [ARGUMENT...]: runs the command and sends it a signal
// before its system call of that number; none with 0. Its children are let alone. Writes to the
// file REPORT how many calls it made until then. The exit status is the command's, 128 and the
// number more for a signal that ends it.
#include <unistd.h>

#include <sys/ptrace.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

constexpr int kCallStop = SIGTRAP | 0x80;

[[noreturn]] void run_traced(char** command)
{
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    std::raise(SIGSTOP);
    ::execvp(command[0], command);
    std::perror(command[0]);
    std::_Exit(127);
}

// Lets the process go on until its next stop. Returns false when it has ended.
bool go_on(pid_t process, int signal, int& status)
{
    ::ptrace(PTRACE_SYSCALL, process, nullptr, signal);
    return ::waitpid(process, &status, 0) == process && WIFSTOPPED(status);
}

// What the process gets when it goes on: the signal that stopped it, if one did.
int signal_behind(int status)
{
    const int signal = WSTOPSIG(status);
    return signal == kCallStop || signal == SIGTRAP ? 0 : signal;
}

// Follows the process to its call `number`, or to its end with 0. Returns the calls that it made.
unsigned long follow(pid_t process, unsigned long number, int& status)
{
    unsigned long calls = 0;
    bool is_inside = false;  // of a call: it stops when it begins and when it ends
    int signal = 0;
    while (go_on(process, signal, status)) {
        signal = signal_behind(status);
        if (WSTOPSIG(status) != kCallStop) {
            continue;
        }
        is_inside = !is_inside;
        calls += is_inside ? 1 : 0;
        if (is_inside && calls == number) {
            break;
        }
    }
    return calls;
}

}  // namespace

int main(int argument_count, char** arguments)
{
    if (argument_count < 5) {
        std::fputs("usage: signal_at_call SIGNAL NUMBER REPORT COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const int signal = std::atoi(arguments[1]);
    const unsigned long number = std::strtoul(arguments[2], nullptr, 10);
    const pid_t process = ::fork();
    if (process == 0) {
        run_traced(arguments + 4);
    }
    // The terminal's signals are for the command.
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(each, SIG_IGN);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    const unsigned long calls = follow(process, number, status);
    if (WIFSTOPPED(status)) {
        ::kill(process, signal);
        ::ptrace(PTRACE_DETACH, process, nullptr, nullptr);
        ::waitpid(process, &status, 0);
    }
    if (std::FILE* const report = std::fopen(arguments[3], "we")) {
        std::fprintf(report, "%lu\n", calls);
        std::fclose(report);
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}
