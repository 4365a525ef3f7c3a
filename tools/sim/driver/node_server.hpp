// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fault_plan.hpp"
#include "driver/fuse.hpp"
#include "driver/node_source.hpp"
#include "driver/node_table.hpp"
#include "driver/openings.hpp"
#include "driver/pauses.hpp"

#include <unistd.h>

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

namespace nimba::sim {

// Answers the kernel's requests about a file system that shows a driver's nodes. Each member that
// takes a request answers it. Several threads may call them at once.
class NodeServer {
  public:
    NodeServer(NodeSource& source, FaultPlan& faults) : source_{source}, faults_{faults} {}

    // Answers requests that wait now, and later ones, without waiting.
    void end_pauses() { pauses_.end(); }

    void look_up(fuse_req_t request, fuse_ino_t parent, const char* name);
    void forget(fuse_req_t request, fuse_ino_t number, uint64_t times);
    void forget_many(fuse_req_t request, std::size_t count, fuse_forget_data* list);
    void get_attributes(fuse_req_t request, fuse_ino_t number, fuse_file_info* file);
    void set_attributes(fuse_req_t request, fuse_ino_t number, struct stat* attributes, int which,
                        fuse_file_info* file);
    void open(fuse_req_t request, fuse_ino_t number, fuse_file_info* file);
    void read(fuse_req_t request, fuse_ino_t number, std::size_t size, off_t offset,
              fuse_file_info* file);
    void write(fuse_req_t request, fuse_ino_t number, const char* bytes, std::size_t size,
               off_t offset, fuse_file_info* file);
    void open_directory(fuse_req_t request, fuse_ino_t number, fuse_file_info* file);
    void read_directory(fuse_req_t request, fuse_ino_t number, std::size_t size, off_t offset,
                        fuse_file_info* file);
    void release(fuse_req_t request, fuse_ino_t number, fuse_file_info* file);

  private:
    struct stat status_of(const std::string& path, NodeAttributes attributes) const;
    std::optional<NodeAttributes> find(const std::string& path);
    bool is_dead(const std::string& path, uint64_t absences);
    void take_names(Opening& opening);
    void take_new_text(Opening& opening);
    void answer_opened(fuse_req_t request, fuse_file_info* file, std::shared_ptr<Opening> opening);
    int start_reading(fuse_req_t request, Opening& opening);
    std::string directory_part(fuse_req_t request, const Opening& opening, std::size_t begin,
                               std::size_t end, std::size_t size);

    NodeSource& source_;
    FaultPlan& faults_;
    Pauses pauses_;
    NodeTable nodes_{FUSE_ROOT_ID};
    const std::time_t made_ = std::time(nullptr);
    const uid_t user_ = geteuid();
    const gid_t group_ = getegid();
    Openings openings_;
};

}  // namespace nimba::sim
