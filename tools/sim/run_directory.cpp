// SPDX-License-Identifier: MIT
#include "run_directory.hpp"

#include "message.hpp"
#include "test_bed_error.hpp"
#include "tree_removal.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fmt/core.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "nimba-sim.";
constexpr std::string_view kName = "/nimba-sim.XXXXXX";
constexpr const char* kLock = "lock";
// The longest path below it at which umockdev makes a socket.
constexpr std::string_view kLongestSocket = "/umockdev.XXXXXX/ioctl/dev/dri/controlD127";
constexpr std::size_t kLongestBase =
    sizeof(sockaddr_un::sun_path) - 1 - kName.size() - kLongestSocket.size();
// A new directory may be taken for a left one before it is locked, but not so often.
constexpr int kTries = 5;

std::vector<fs::path> base_directories()
{
    std::vector<fs::path> bases{"/dev/shm"};
    if (const char* temporary = getenv("TMPDIR"); temporary != nullptr && *temporary != '\0') {
        bases.push_back(fs::absolute(temporary));
    }
    bases.emplace_back("/tmp");
    return bases;
}

// Opens the lock file of a run's directory and locks it. Returns no descriptor if that cannot be
// done, as while a process of the run lives; errno tells why.
tools::Descriptor lock_directory(const fs::path& directory, int flags)
{
    tools::Descriptor lock{
        open((directory / kLock).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600)};
    if (lock && flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        return tools::Descriptor{};
    }
    return lock;
}

bool is_own_directory(const fs::path& path)
{
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

// Removes a run's directory, its lock last: where something stays, as a mount that only another
// namespace can undo, a later run can try again.
void remove_run(const fs::path& directory, std::error_code& error)
{
    fs::permissions(directory, fs::perms::owner_all, fs::perm_options::add, error);
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, error}) {
        if (entry.path().filename() != kLock) {
            entries.push_back(entry.path());
        }
    }
    for (const fs::path& entry : entries) {
        remove_tree(entry, error);
        if (!error) {
            fs::remove(entry, error);  // no directory
        }
        if (error) {
            return;
        }
    }
    fs::remove(directory / kLock, error);
    fs::remove(directory, error);
}

// Removes the directories of runs whose processes have all been killed.
void remove_left_directories(const fs::path& base)
{
    std::error_code ignored;
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::directory_iterator{base, ignored}) {
        if (entry.path().filename().native().starts_with(kPrefix)) {
            found.push_back(entry.path());
        }
    }
    for (const fs::path& directory : found) {
        if (!is_own_directory(directory)) {
            continue;
        }
        if (const tools::Descriptor lock = lock_directory(directory, 0)) {
            remove_run(directory, ignored);
        } else if (errno == ENOENT) {
            // Killed before it made its lock, or behind the lock's removal: it is empty.
            fs::remove(directory, ignored);
        }
    }
}

}  // namespace

RunDirectory::RunDirectory()
{
    std::string problem;
    for (const fs::path& base : base_directories()) {
        remove_left_directories(base);
        if (!make_in(base, problem)) {
            continue;
        }
        if (base.native().size() > kLongestBase) {
            remove();
            throw TestBedError{fmt::format(
                "{}: too long a path for the sockets of a run; set TMPDIR to one of {} bytes at "
                "most",
                base.native(), kLongestBase)};
        }
        return;
    }
    throw TestBedError{problem};
}

bool RunDirectory::make_in(const fs::path& base, std::string& problem)
{
    for (int i = 0; i < kTries; ++i) {
        std::string name = base.native() + std::string{kName};
        if (mkdtemp(name.data()) == nullptr) {
            problem = fmt::format("cannot make the directory {}: {}", name, std::strerror(errno));
            return false;
        }
        lock_ = lock_directory(name, O_CREAT);
        const int error = errno;
        if (lock_ && access((fs::path{name} / kLock).c_str(), F_OK) == 0) {
            path_ = name;
            return true;
        }
        problem = fmt::format("cannot lock the directory {}: {}", name, std::strerror(error));
        std::error_code ignored;
        remove_run(name, ignored);
    }
    return false;
}

void RunDirectory::remove()
{
    std::error_code error;
    remove_run(path_, error);
    if (error) {
        complain(fmt::format("cannot remove {}: {}", path_.native(), error.message()));
    }
}

void permit_removal(const fs::path& directory)
{
    std::error_code ignored;
    fs::permissions(directory, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, ignored}) {
        if (entry.symlink_status(ignored).type() == fs::file_type::directory) {
            permit_removal(entry.path());
        }
    }
}

bool lists_newest_first(const fs::path& directory)
{
    const fs::path probe = directory / "order";
    fs::create_directory(probe);
    for (const char* name : {"older", "newer"}) {
        std::ofstream{probe / name};
    }
    const fs::directory_iterator first{probe};
    const bool newest_first = first != end(first) && first->path().filename() == "newer";
    fs::remove_all(probe);
    return newest_first;
}

}  // namespace nimba::sim
