// SPDX-License-Identifier: MIT
#include "bench/memory_program.hpp"

#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace nimba::bench {
namespace {

struct Pipe {
    Pipe()
    {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error{errno, std::generic_category(), "pipe"};
        }
        read_end = tools::Descriptor{ends[0]};
        write_end = tools::Descriptor{ends[1]};
    }
    tools::Descriptor read_end;
    tools::Descriptor write_end;
};

// Starts the program with its standard output on `output`.
pid_t start(std::string program, std::string first, std::string second,
            const tools::Descriptor& output)
{
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO);
    std::array<char*, 4> arguments{program.data(), first.data(), second.data(), nullptr};
    pid_t child = -1;
    const int error =
        ::posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error{error, std::generic_category(), program};
    }
    return child;
}

std::string read_all(const tools::Descriptor& input)
{
    std::string text;
    std::array<char, 256> buffer{};
    ssize_t got = 0;
    while ((got = ::read(input.get(), buffer.data(), buffer.size())) > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
    return text;
}

}  // namespace

std::string run_memory_program(const std::string& kind, const std::filesystem::path& directory)
{
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    Pipe pipe;
    const pid_t child =
        start(self.parent_path() / "nimba-bench-memory", kind, directory, pipe.write_end);
    pipe.write_end.reset();
    std::string text = read_all(pipe.read_end);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0) {
        throw std::runtime_error{"nimba-bench-memory failed"};
    }
    return text;
}

}  // namespace nimba::bench
