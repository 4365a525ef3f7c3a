// SPDX-License-Identifier: MIT
#include "run_directory.hpp"

#include "message.hpp"
#include "test_bed_error.hpp"

#include <stdlib.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kName = "/nimba-sim.XXXXXX";
// The longest path below it at which umockdev makes a socket.
constexpr std::string_view kLongestSocket = "/umockdev.XXXXXX/ioctl/dev/dri/controlD127";
constexpr std::size_t kLongestBase =
    sizeof(sockaddr_un::sun_path) - 1 - kName.size() - kLongestSocket.size();

std::vector<fs::path> base_directories()
{
    std::vector<fs::path> bases{"/dev/shm"};
    if (const char* temporary = getenv("TMPDIR"); temporary != nullptr && *temporary != '\0') {
        bases.push_back(fs::absolute(temporary));
    }
    bases.emplace_back("/tmp");
    return bases;
}

// Holds no directory open while it is in another one, so that few descriptors are enough.
void remove_tree(const fs::path& directory, std::error_code& error)
{
    std::error_code ignored;
    fs::permissions(directory, fs::perms::owner_all, fs::perm_options::add, ignored);
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, ignored}) {
        entries.push_back(entry.path());
    }
    for (const fs::path& entry : entries) {
        if (fs::symlink_status(entry, ignored).type() == fs::file_type::directory) {
            remove_tree(entry, ignored);
        } else {
            fs::remove(entry, ignored);
        }
    }
    fs::remove(directory, error);
}

}  // namespace

RunDirectory::RunDirectory()
{
    std::string problem;
    for (const fs::path& base : base_directories()) {
        std::string name = base.native() + std::string{kName};
        if (mkdtemp(name.data()) == nullptr) {
            problem = fmt::format("cannot make the directory {}: {}", name, std::strerror(errno));
            continue;
        }
        path_ = name;
        if (base.native().size() > kLongestBase) {
            rmdir(name.c_str());
            throw TestBedError{fmt::format(
                "{}: too long a path for the sockets of a run; set TMPDIR to one of {} bytes at "
                "most",
                base.native(), kLongestBase)};
        }
        return;
    }
    throw TestBedError{problem};
}

RunDirectory::~RunDirectory()
{
    std::error_code error;
    remove_tree(path_, error);
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
