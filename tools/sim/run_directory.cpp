// SPDX-License-Identifier: MIT
#include "run_directory.hpp"

#include "test_bed_error.hpp"

#include <stdlib.h>
#include <unistd.h>

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

fs::path base_directory()
{
    const char* memory = "/dev/shm";
    if (access(memory, W_OK | X_OK) == 0) {
        return memory;
    }
    const char* temporary = getenv("TMPDIR");
    return temporary == nullptr || *temporary == '\0' ? "/tmp" : temporary;
}

}  // namespace

RunDirectory::RunDirectory()
{
    std::string name = base_directory() / "nimba-sim.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw TestBedError{
            fmt::format("cannot make the directory {}: {}", name, std::strerror(errno))};
    }
    path_ = name;
}

RunDirectory::~RunDirectory()
{
    permit_removal(path_);
    std::error_code error;
    fs::remove_all(path_, error);
    if (error) {
        fmt::print(stderr, "nimba-sim: cannot remove {}: {}\n", path_.native(), error.message());
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
    const bool newest_first = first->path().filename() == "newer";
    fs::remove_all(probe);
    return newest_first;
}

}  // namespace nimba::sim
