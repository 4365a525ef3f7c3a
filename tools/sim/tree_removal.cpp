// SPDX-License-Identifier: MIT
#include "tree_removal.hpp"

#include "unmount.hpp"

#include <sys/stat.h>

#include <optional>
#include <vector>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

// Nothing where there is no directory, or a dead one.
std::optional<dev_t> file_system_of_directory(const fs::path& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    return status.st_dev;
}

// Holds no directory open while it is in another one, so that few descriptors are enough.
void remove_on(dev_t file_system, const fs::path& directory, std::error_code& error)
{
    std::error_code ignored;
    chmod(directory.c_str(), S_IRWXU);
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, ignored}) {
        entries.push_back(entry.path());
    }
    for (const fs::path& entry : entries) {
        if (file_system_of_directory(entry) == file_system) {
            remove_on(file_system, entry, ignored);
        } else {
            fs::remove(entry, ignored);
        }
    }
    fs::remove(directory, error);
}

}  // namespace

void remove_tree(const fs::path& directory, std::error_code& error)
{
    unmount_below(directory);
    if (const auto file_system = file_system_of_directory(directory)) {
        remove_on(*file_system, directory, error);
    }
}

}  // namespace nimba::sim
