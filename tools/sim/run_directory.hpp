// SPDX-License-Identifier: MIT
#pragma once

#include "tools/descriptor.hpp"

#include <filesystem>
#include <string>

namespace nimba::sim {

// A private directory that holds everything a run makes, and that goes away with this object,
// whatever the permissions in it have become and whatever is mounted in it.
class RunDirectory {
  public:
    // Makes the directory in memory (/dev/shm) where possible: socket paths must be short, and file
    // systems in memory keep the order in which directory entries are made. Else in TMPDIR, else in
    // /tmp. Removes there what runs have left whose processes were all killed. Throws TestBedError,
    // also when the path is too long for sockets.
    RunDirectory();
    ~RunDirectory() { remove(); }
    RunDirectory(const RunDirectory&) = delete;
    RunDirectory& operator=(const RunDirectory&) = delete;

    // Removes the directory early, if another process has not done so. Complains when it cannot.
    void remove();

    const std::filesystem::path& path() const { return path_; }

  private:
    bool make_in(const std::filesystem::path& base, std::string& problem);

    std::filesystem::path path_;
    // Held by each process that was forked with it, so that the directory counts as in use.
    tools::Descriptor lock_;
};

// Gives back to `directory` and those below it the permissions without which their entries cannot
// be removed.
void permit_removal(const std::filesystem::path& directory);

// Whether the file system of `directory` lists the newest entry first.
bool lists_newest_first(const std::filesystem::path& directory);

}  // namespace nimba::sim
