// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace nimba::sim {

// A private directory that holds everything a run makes, and that goes away with this object,
// whatever the permissions in it have become.
class RunDirectory {
  public:
    // Makes the directory in memory (/dev/shm) where possible: socket paths must be short, and file
    // systems in memory keep the order in which directory entries are made. Else in TMPDIR, else in
    // /tmp. Throws TestBedError, also when the path is too long for sockets.
    RunDirectory();
    ~RunDirectory();
    RunDirectory(const RunDirectory&) = delete;
    RunDirectory& operator=(const RunDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// Gives back to `directory` and those below it the permissions without which their entries cannot
// be removed.
void permit_removal(const std::filesystem::path& directory);

// Whether the file system of `directory` lists the newest entry first.
bool lists_newest_first(const std::filesystem::path& directory);

}  // namespace nimba::sim
