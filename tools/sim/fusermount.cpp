// SPDX-License-Identifier: MIT
#include "fusermount.hpp"

#include "environment.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace nimba::sim {
namespace {

constexpr const char* kProgram = "fusermount3";
constexpr const char* kSocketVariable = "_FUSE_COMMFD";
// The number of the socket in the program.
constexpr int kSocket = 3;

// How the program is started: no signal held back, its words into a pipe, the socket open.
class Start {
  public:
    Start(int output, int connection_socket)
    {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);
        if (connection_socket >= 0) {
            posix_spawn_file_actions_adddup2(&actions_, connection_socket, kSocket);
        }
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~Start()
    {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    // Returns 0 or an error number.
    int spawn(pid_t& child, std::vector<std::string> arguments) const
    {
        std::vector<char*> words;
        words.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) {
            words.push_back(argument.data());
        }
        words.push_back(nullptr);
        Environment environment{environ};
        environment.set(kSocketVariable, std::to_string(kSocket));
        return posix_spawnp(&child, kProgram, &actions_, &attributes_, words.data(),
                            environment.variables().data());
    }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

std::string read_all(int fd)
{
    std::string text;
    std::array<char, 512> part{};
    ssize_t length = 0;
    while ((length = read(fd, part.data(), part.size())) > 0) {
        text.append(part.data(), static_cast<std::size_t>(length));
    }
    return text;
}

std::string first_line(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

}  // namespace

FusermountResult run_fusermount(const std::vector<std::string>& arguments, int connection_socket)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {false, std::string{"cannot make a pipe: "} + std::strerror(errno)};
    }
    const tools::Descriptor output{ends[0]};
    tools::Descriptor input{ends[1]};
    std::vector<std::string> words{kProgram};
    words.insert(words.end(), arguments.begin(), arguments.end());
    pid_t child = 0;
    const int error = Start{input.get(), connection_socket}.spawn(child, std::move(words));
    input.reset();
    if (error != 0) {
        return {false, std::string{kProgram} + ": " + std::strerror(error)};
    }
    const std::string said = first_line(read_all(output.get()));
    int status = 0;
    const bool ended = waitpid(child, &status, 0) == child;
    if (ended && WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return {true, ""};
    }
    return {false, said.empty() ? std::string{kProgram} + " failed" : said};
}

}  // namespace nimba::sim
