// SPDX-License-Identifier: MIT
// A worker's state between requests: the library, and what discovery found.
#pragma once

#include "tools/smi/worker/channel.hpp"
#include "tools/smi/worker/discovery.hpp"
#include "tools/smi/worker/library.hpp"
#include "tools/smi/worker/progress.hpp"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace nimba::smi {

struct WorkerOptions {
    std::string library;
    bool verbose = false;
    std::optional<int> slot;  // the adapter that this worker serves
};

class Session final {
  public:
    // `progress` is where the library's record is kept.
    Session(WorkerOptions options, Channel& channel, DiscoveryProgress& progress)
        : options_{std::move(options)}, channel_{channel}, progress_{progress}
    {
    }

    [[nodiscard]] const WorkerOptions& options() const { return options_; }

    // The call that was entered last.
    [[nodiscard]] const std::string& current_call() const { return call_; }

    // Tells the tool about a call that may block, die or throw, and makes it.
    template <typename Function>
    auto call(std::string name, Function&& function)
    {
        call_ = std::move(name);
        channel_.send(Entering{call_});
        return std::invoke(std::forward<Function>(function));
    }

    // Loads the library at the first request, installs the receiver of its messages before anything
    // else, and shakes hands. Returns what is wrong, if something is.
    std::optional<Failure> ensure_library();

    // After ensure_library succeeded.
    [[nodiscard]] const Library& library() const { return *library_; }
    [[nodiscard]] const interface_version_info& handshake() const { return handshake_; }

    // Discovers at the first call; descriptors would pile up if it were done again.
    const DiscoveryRecords& discover();

  private:
    WorkerOptions options_;
    Channel& channel_;
    DiscoveryProgress& progress_;
    std::string call_{kStartCall};
    std::optional<Library> library_;
    interface_version_info handshake_{};
    std::optional<DiscoveryRecords> records_;
};

}  // namespace nimba::smi
