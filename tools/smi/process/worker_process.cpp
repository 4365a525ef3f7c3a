// SPDX-License-Identifier: MIT
#include "tools/smi/process/worker_process.hpp"

#include "tools/smi/worker/channel.hpp"
#include "tools/smi/worker/complaints.hpp"
#include "tools/smi/worker/progress.hpp"
#include "tools/smi/worker/worker.hpp"

#include <poll.h>
#include <spawn.h>

#include <fmt/core.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <vector>

namespace nimba::smi {
namespace {

using namespace std::chrono_literals;

// How long a worker may take to end on its own, and to go once it is killed.
constexpr auto kLeave = 1000ms;

[[noreturn]] void fail(int error, const char* what)
{
    throw std::system_error{error, std::generic_category(), what};
}

class SpawnActions final {
  public:
    SpawnActions() { ::posix_spawn_file_actions_init(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    posix_spawn_file_actions_t* get() { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

class SpawnAttributes final {
  public:
    SpawnAttributes() { ::posix_spawnattr_init(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    posix_spawnattr_t* get() { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

std::vector<std::string> command_line(const WorkerOptions& options)
{
    std::vector<std::string> words{"nimba-smi", "--worker", "--library=" + options.library};
    if (const auto& adapter = options.adapter) {
        words.insert(words.end(),
                     {"--slot", std::to_string(adapter->slot), "--bus-id=" + adapter->bus_id});
    }
    if (options.verbose) {
        words.emplace_back("--verbose");
    }
    return words;
}

// Starts this program anew, in a process group of its own, so that it can be ended together with
// the commands that the library runs.
pid_t spawn(const WorkerOptions& options, int channel, int progress, int complaints)
{
    SpawnActions actions;
    ::posix_spawn_file_actions_adddup2(actions.get(), channel, kWorkerChannel);
    ::posix_spawn_file_actions_adddup2(actions.get(), progress, kWorkerProgress);
    ::posix_spawn_file_actions_adddup2(actions.get(), complaints, kWorkerComplaints);
    SpawnAttributes attributes;
    ::posix_spawnattr_setpgroup(attributes.get(), 0);
    // Signals that the tool waits for in its own way are no affair of its workers.
    sigset_t none;
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigmask(attributes.get(), &none);
    ::posix_spawnattr_setflags(attributes.get(), POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);

    std::vector<std::string> words = command_line(options);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, "/proc/self/exe", actions.get(), attributes.get(),
                                    arguments.data(), environ);
    if (error != 0) {
        fail(error, "cannot start a worker process");
    }
    return pid;
}

}  // namespace

WorkerProcess::WorkerProcess(const WorkerOptions& options)
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        fail(errno, "cannot make a channel to a worker process");
    }
    channel_ = tools::Descriptor{ends[0]};
    const tools::Descriptor worker_end{ends[1]};
    // Made behind the channel's two ends, its number is none that a worker's descriptors take.
    const tools::Descriptor memory = make_progress_memory();
    progress_ = map_progress(memory.get());
    if (!progress_) {
        fail(errno, "cannot make memory to share with a worker process");
    }
    complaints_ = make_complaint_memory();
    if (!complaints_) {
        fail(errno, "cannot make memory for what a worker process prints");
    }
    pid_ = spawn(options, worker_end.get(), memory.get(), complaints_.get());
    process_ = tools::Descriptor{static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0))};
    if (!process_) {
        const int error = errno;
        ::kill(-pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        fail(error, "cannot watch a worker process");
    }
}

WorkerProcess::~WorkerProcess()
{
    channel_.reset();
    if (process_ && !was_killed_ && !wait(kLeave)) {
        kill();
    }
}

void WorkerProcess::send(std::string_view request)
{
    static_cast<void>(send_all(channel_.get(), encode_request(request)));
}

bool WorkerProcess::receive()
{
    std::array<char, 65536> bytes{};
    const ssize_t received = ::recv(channel_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (received > 0) {
        lines_.append({bytes.data(), static_cast<std::size_t>(received)});
    }
    return received > 0 || (received < 0 && (errno == EAGAIN || errno == EINTR));
}

std::optional<std::string> WorkerProcess::wait(std::chrono::milliseconds patience)
{
    pollfd end{process_.get(), POLLIN, 0};
    if (::poll(&end, 1, static_cast<int>(patience.count())) != 1) {
        return std::nullopt;
    }
    // Not reaped yet, it still lends its number to the group of what it started.
    ::kill(-pid_, SIGKILL);
    siginfo_t info{};
    if (::waitid(P_PIDFD, static_cast<id_t>(process_.get()), &info, WEXITED) != 0) {
        return std::nullopt;
    }
    process_.reset();
    return describe_end(info.si_code, info.si_status);
}

std::string WorkerProcess::last_complaint() const
{
    return last_line_in(complaints_.get());
}

void WorkerProcess::kill()
{
    ::kill(-pid_, SIGKILL);
    was_killed_ = true;
    static_cast<void>(wait(kLeave));
}

std::string describe_end(int code, int status)
{
    if (code == CLD_EXITED) {
        return fmt::format("exit status {}", status);
    }
    const char* const name = ::sigabbrev_np(status);
    return name == nullptr ? fmt::format("killed by signal {}", status)
                           : fmt::format("killed by SIG{}", name);
}

}  // namespace nimba::smi
