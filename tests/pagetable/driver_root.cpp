// SPDX-License-Identifier: MIT
#include "driver_root.hpp"

#include <dirent.h>
#include <dlfcn.h>

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace nimba::test {
namespace {

constexpr std::string_view kRoot = "/sys/kernel/debug/dri/0/qv";

std::string* root_of_test = nullptr;

std::string redirected(std::string_view path)
{
    const bool below =
        path.starts_with(kRoot) && (path.size() == kRoot.size() || path[kRoot.size()] == '/');
    if (root_of_test == nullptr || !below) {
        return std::string{path};
    }
    return *root_of_test + std::string{path.substr(kRoot.size())};
}

template <typename Function>
Function* next_of(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

DriverRoot::DriverRoot()
{
    static std::string root;
    root = path().string();
    root_of_test = &root;
}

DriverRoot::~DriverRoot()
{
    root_of_test = nullptr;
}

}  // namespace nimba::test

// Under names of their own, as the C library's headers define some of them where they check sizes.
// A mode that the caller did not pass is what its register held; the C library ignores it as well.
DIR* opendir_of_this_program(const char* path) __asm__("opendir");
int open_of_this_program(const char* path, int flags, mode_t mode) __asm__("open");
int openat_of_this_program(int directory, const char* path, int flags,
                           mode_t mode) __asm__("openat");
std::FILE* fopen_of_this_program(const char* path, const char* mode) __asm__("fopen");

DIR* opendir_of_this_program(const char* path)
{
    static const auto next = nimba::test::next_of<DIR*(const char*)>("opendir");
    return next(nimba::test::redirected(path).c_str());
}

int open_of_this_program(const char* path, int flags, mode_t mode)
{
    static const auto next = nimba::test::next_of<int(const char*, int, ...)>("open");
    return next(nimba::test::redirected(path).c_str(), flags, mode);
}

int openat_of_this_program(int directory, const char* path, int flags, mode_t mode)
{
    static const auto next = nimba::test::next_of<int(int, const char*, int, ...)>("openat");
    return next(directory, nimba::test::redirected(path).c_str(), flags, mode);
}

std::FILE* fopen_of_this_program(const char* path, const char* mode)
{
    static const auto next = nimba::test::next_of<std::FILE*(const char*, const char*)>("fopen");
    return next(nimba::test::redirected(path).c_str(), mode);
}
