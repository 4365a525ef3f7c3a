// SPDX-License-Identifier: MIT
#pragma once

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <string>
#include <system_error>

namespace nimba::bench {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

// Opens the directory for listing. Throws std::system_error.
inline Directory open_directory(const std::string& path)
{
    Directory directory{::opendir(path.c_str())};
    if (directory == nullptr) {
        throw std::system_error{errno, std::generic_category(), path};
    }
    return directory;
}

// The next entry that is neither "." nor ".."; null at the end.
inline const dirent* next_entry(const Directory& directory)
{
    const dirent* entry = nullptr;
    do {
        entry = ::readdir(directory.get());
    } while (entry != nullptr && entry->d_name[0] == '.');
    return entry;
}

}  // namespace nimba::bench
