// SPDX-License-Identifier: MIT
#include "directory_listing.hpp"

#include <dirent.h>
#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace nimba::test {
namespace {

std::optional<std::vector<std::string>> listed_names;
std::size_t next_name = 0;
std::size_t entries_before_failure = 0;
std::size_t failures_left = 0;
int error_of_failure = 0;

dirent* next_listed_name()
{
    static dirent entry{};
    if (next_name == listed_names->size()) {
        return nullptr;
    }
    const std::string& name = (*listed_names)[next_name++];
    const auto end = std::copy(name.begin(), name.end(), std::begin(entry.d_name));
    *end = '\0';
    entry.d_type = DT_UNKNOWN;
    return &entry;
}

}  // namespace

ListedAs::ListedAs(std::vector<std::string> names)
{
    listed_names = std::move(names);
    next_name = 0;
}

ListedAs::~ListedAs()
{
    listed_names.reset();
}

BrokenListing::BrokenListing(std::size_t entries, std::size_t failures, int error)
{
    entries_before_failure = entries;
    failures_left = failures;
    error_of_failure = error;
}

BrokenListing::~BrokenListing()
{
    failures_left = 0;
}

}  // namespace nimba::test

// Stand before the C library's functions in this program.
extern "C" dirent* readdir(DIR* dirp)
{
    using namespace nimba::test;
    if (failures_left > 0 && entries_before_failure == 0) {
        --failures_left;
        errno = error_of_failure;
        return nullptr;
    }
    if (failures_left > 0) {
        --entries_before_failure;
    }
    if (listed_names) {
        return next_listed_name();
    }
    static const auto next = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    return next(dirp);
}

extern "C" int closedir(DIR* dirp)
{
    nimba::test::next_name = 0;  // for the directory that is opened next
    static const auto next = reinterpret_cast<int (*)(DIR*)>(::dlsym(RTLD_NEXT, "closedir"));
    return next(dirp);
}
