// SPDX-License-Identifier: MIT
#include "core/entries.hpp"

#include <cerrno>
#include <string_view>

namespace nimba {

const char* Entries::next()
{
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(directory_.get());
        if (entry == nullptr) {
            failed_ = errno != 0;
            return nullptr;
        }
        const std::string_view name{entry->d_name};
        if (name != "." && name != "..") {
            return entry->d_name;
        }
    }
}

}  // namespace nimba
