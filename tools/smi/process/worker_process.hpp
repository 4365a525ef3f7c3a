// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"
#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/progress.hpp"
#include "tools/smi/worker/session.hpp"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// A worker as its parent sees it: a child process with a channel. Once the object is gone, so is
// the process, and what it started.
class WorkerProcess final {
  public:
    // Throws std::system_error when no process can be started.
    explicit WorkerProcess(const WorkerOptions& options);
    WorkerProcess(WorkerProcess&&) noexcept = default;
    WorkerProcess& operator=(WorkerProcess&&) = delete;

    // Hangs up, upon which the worker ends; kills it if it does not.
    ~WorkerProcess();

    // A request that cannot be delivered is dropped: the worker is dead, and receive says so.
    void send(std::string_view request);

    // Becomes readable when receive has something to tell.
    [[nodiscard]] int channel() const { return channel_.get(); }

    // Takes in what has arrived. Returns false once the worker has hung up.
    bool receive();

    // The next whole line that arrived.
    std::optional<std::string> next_line() { return lines_.next_line(); }

    // How far the worker's discovery came. The worker writes it until it has ended.
    [[nodiscard]] const DiscoveryProgress& progress() const { return *progress_; }

    // The last line that the worker wrote on standard error in its last call, when it does not
    // show what it writes; empty without one.
    [[nodiscard]] std::string last_complaint() const;

    // Waits for the end of the process, at most `patience`. Returns how it ended ("exit status 3",
    // "killed by SIGSEGV"), or nothing while it runs. What the process started ends with it.
    std::optional<std::string> wait(std::chrono::milliseconds patience);

    // Ends the process and what it started, by force.
    void kill();

    // Whether it was killed and the kernel does not let it go. One that is still so at the end of
    // this object is left behind.
    [[nodiscard]] bool is_stuck() const { return was_killed_ && process_; }

  private:
    tools::Descriptor channel_;
    SharedProgress progress_;
    tools::Descriptor complaints_;
    tools::Descriptor process_;  // refers to the child; empty once it was waited for
    pid_t pid_ = -1;
    bool was_killed_ = false;
    LineBuffer lines_;
};

// "exit status 3" or "killed by SIGSEGV", from what waitid reports.
std::string describe_end(int code, int status);

}  // namespace nimba::smi
