// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fault_plan.hpp"
#include "driver/fuse_mount.hpp"
#include "driver/node_source.hpp"

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct fuse_session;

namespace nimba::sim {

class NodeServer;

// A driver's nodes as files. Threads of this process answer for them, so that nothing in it may
// wait for such a file while it holds up the end of the object.
//
// Whoever opens a file sees the text of that moment, in reads of any size, until it is closed or a
// command is written to the same opening. Each write(2) is one command. Nothing but attributes is
// remembered: each look goes to the driver.
class NodeFileSystem {
  public:
    // Mounts the nodes at `directory`. Throws MountError.
    NodeFileSystem(NodeSource& source, FaultPlan& faults, const std::filesystem::path& directory);

    // Unmounts. Who still has a file open can read it no more.
    ~NodeFileSystem();

    NodeFileSystem(const NodeFileSystem&) = delete;
    NodeFileSystem& operator=(const NodeFileSystem&) = delete;

  private:
    struct SessionEnd {
        void operator()(fuse_session* session) const;
    };

    void start_thread();
    void work();
    void knock();

    FuseMount mount_;
    std::unique_ptr<NodeServer> server_;
    std::unique_ptr<fuse_session, SessionEnd> session_;
    tools::Descriptor root_;  // the mounted directory
    std::atomic<bool> stopping_{false};
    std::atomic<int> idle_{0};     // threads that wait for a request
    std::atomic<int> working_{0};  // threads that have not yet seen that they are to end
    std::mutex threads_mutex_;     // guards what follows
    std::vector<std::thread> threads_;
};

}  // namespace nimba::sim
