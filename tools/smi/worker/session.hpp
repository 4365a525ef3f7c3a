// SPDX-License-Identifier: MIT
// A worker's state between requests: the library, and what discovery found.
#pragma once

#include "tools/smi/worker/channel.hpp"
#include "tools/smi/worker/complaints.hpp"
#include "tools/smi/worker/discovery.hpp"
#include "tools/smi/worker/library.hpp"
#include "tools/smi/worker/monitor.hpp"
#include "tools/smi/worker/page_tables.hpp"
#include "tools/smi/worker/progress.hpp"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace nimba::smi {

// The adapter that a worker serves.
struct ServedAdapter {
    int slot = -1;  // where it was found
    std::string bus_id;
};

struct WorkerOptions {
    std::string library;
    bool verbose = false;
    std::optional<ServedAdapter> adapter;
};

class Session final {
  public:
    // `progress` is where the library's record is kept, `complaints` the memory for what the
    // library writes on standard error.
    Session(WorkerOptions options, Channel& channel, DiscoveryProgress& progress, int complaints)
        : options_{std::move(options)},
          channel_{channel},
          progress_{progress},
          complaints_{complaints}
    {
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { leave_adapter(); }

    [[nodiscard]] const WorkerOptions& options() const { return options_; }

    // The call that was entered last.
    [[nodiscard]] const std::string& current_call() const { return call_; }

    // Tells the tool about a call that may block, die or throw, and makes it. The call may take
    // longer than others by `extra`.
    template <typename Function>
    auto call(std::string name, Function&& function, std::chrono::milliseconds extra = {})
    {
        call_ = std::move(name);
        channel_.send(Entering{call_, extra.count()});
        forget_complaints(complaints_);
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

    // Makes the adapter of a discovery record current in the library, at the first call; the record
    // says which. Usage accounting is on until leave_adapter, which the end of the session calls.
    // Returns whether all of the library is at the adapter's service.
    bool enter_adapter(const find_adapter& adapters);
    void leave_adapter();

    // The record that enter_adapter was given.
    [[nodiscard]] const find_adapter& adapters() const { return *adapters_; }

    // What the last reading of page tables left; nothing before the first.
    [[nodiscard]] std::optional<PageTables>& page_tables() { return page_tables_; }

    // What samples of the adapter need; nothing before the first.
    [[nodiscard]] std::optional<Monitor>& monitor() { return monitor_; }

  private:
    WorkerOptions options_;
    Channel& channel_;
    DiscoveryProgress& progress_;
    int complaints_;
    std::string call_{kStartCall};
    std::optional<Library> library_;
    interface_version_info handshake_{};
    std::optional<DiscoveryRecords> records_;
    std::optional<find_adapter> adapters_;  // of the current adapter
    bool complete_ = false;
    std::optional<PageTables> page_tables_;
    std::optional<Monitor> monitor_;
};

}  // namespace nimba::smi
