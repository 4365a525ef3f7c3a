// SPDX-License-Identifier: MIT
#include "bench/scratch_directory.hpp"

#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace nimba::bench {
namespace {

class ScratchDirectory final {
  public:
    explicit ScratchDirectory(const std::filesystem::path& parent)
    {
        std::string name = parent / "nimba-bench.XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::system_error{errno, std::generic_category(), name};
        }
        path_ = name;
    }
    ~ScratchDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// Holds back what would end this process, and the end of its child, for this object's life.
class HeldSignals final {
  public:
    HeldSignals()
    {
        ::signal(SIGCHLD, SIG_DFL);  // whoever started the program may ignore it
        sigemptyset(&held_);
        for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGCHLD}) {
            sigaddset(&held_, number);
        }
        ::sigprocmask(SIG_BLOCK, &held_, &before_);
    }
    ~HeldSignals() { restore(); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    int wait() const { return ::sigwaitinfo(&held_, nullptr); }
    void restore() const { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t held_{};
    sigset_t before_{};
};

struct Outcome {
    int wait_status = 0;
    int signal = 0;  // what this process was sent meanwhile; 0: nothing
};

Outcome supervise(pid_t child, const HeldSignals& signals)
{
    Outcome outcome;
    while (::waitpid(child, &outcome.wait_status, WNOHANG) == 0) {
        const int number = signals.wait();
        if (number > 0 && number != SIGCHLD) {
            outcome.signal = number;
            ::kill(child, SIGKILL);
            ::waitpid(child, &outcome.wait_status, 0);
            break;
        }
    }
    return outcome;
}

Outcome run_in_child(const HeldSignals& signals, const std::function<int()>& work)
{
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        throw std::system_error{errno, std::generic_category(), "fork"};
    }
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        signals.restore();
        std::_Exit(::getppid() == parent ? work() : EXIT_FAILURE);
    }
    return supervise(child, signals);
}

}  // namespace

int run_in_scratch_directory(const std::filesystem::path& parent,
                             const std::function<int(const std::filesystem::path&)>& work)
{
    Outcome outcome;
    {
        const HeldSignals signals;
        const ScratchDirectory directory{parent};
        outcome = run_in_child(signals, [&] { return work(directory.path()); });
    }
    if (outcome.signal != 0) {
        ::raise(outcome.signal);
    }
    if (WIFSIGNALED(outcome.wait_status)) {
        fmt::print(stderr, "nimba-bench: ended by \"{}\"\n",
                   ::strsignal(WTERMSIG(outcome.wait_status)));
        return EXIT_FAILURE;
    }
    return WEXITSTATUS(outcome.wait_status);
}

}  // namespace nimba::bench
