// SPDX-License-Identifier: MIT
// Processes for tests that read process names.
#pragma once

#include "support/descriptor.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <vector>

namespace nimba::test {

// Runs /bin/cat under this command line, with `input` and `output` as its standard input and
// output. Returns its process id.
inline pid_t spawn_cat(std::vector<std::string> command_line, int input, int output)
{
    std::vector<char*> arguments;
    arguments.reserve(command_line.size() + 1);
    for (std::string& argument : command_line) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, "/bin/cat", &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error{error, std::generic_category(), "posix_spawn"};
    }
    return pid;
}

class Pipe final {
  public:
    int read_end() const { return read_end_.get(); }
    int write_end() const { return write_end_.get(); }

  private:
    static std::array<int, 2> open_pipe()
    {
        std::array<int, 2> ends{-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error{errno, std::generic_category(), "pipe2"};
        }
        return ends;
    }

    std::array<int, 2> ends_ = open_pipe();
    Descriptor read_end_{ends_[0]};
    Descriptor write_end_{ends_[1]};
};

// A process that runs under a command line of the test's own, to the end of its scope. What stands
// behind the first word must mean nothing to cat, as "-u" does.
class NamedProcess final {
  public:
    explicit NamedProcess(const std::vector<std::string>& command_line)
        : pid_{spawn_cat(command_line, requests_.read_end(), answers_.write_end())}
    {
        // Its command line is there for certain once it has answered.
        char byte = '?';
        if (::write(requests_.write_end(), &byte, 1) != 1 ||
            ::read(answers_.read_end(), &byte, 1) != 1) {
            throw std::system_error{errno, std::generic_category(), "the process does not answer"};
        }
    }
    ~NamedProcess()
    {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    NamedProcess(const NamedProcess&) = delete;
    NamedProcess& operator=(const NamedProcess&) = delete;

    int pid() const { return pid_; }

  private:
    Pipe requests_;
    Pipe answers_;
    pid_t pid_;
};

// A process that has ended; until the end of its scope its parent has not asked for its status, so
// that it is still there, with an empty command line.
class EndedProcess final {
  public:
    EndedProcess()
    {
        const Descriptor null{::open("/dev/null", O_RDWR | O_CLOEXEC)};
        pid_ = spawn_cat({"ended"}, null.get(), null.get());
        siginfo_t info{};
        ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT);
    }
    ~EndedProcess() { ::waitpid(pid_, nullptr, 0); }
    EndedProcess(const EndedProcess&) = delete;
    EndedProcess& operator=(const EndedProcess&) = delete;

    int pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
};

// The id of a process that is gone.
inline int gone_process()
{
    return EndedProcess{}.pid();
}

}  // namespace nimba::test
