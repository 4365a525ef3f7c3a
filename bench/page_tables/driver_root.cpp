// SPDX-License-Identifier: MIT
#include "bench/page_tables/driver_root.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>

#include <cstdarg>
#include <string>
#include <string_view>

// These stand before the C library's. They have names of their own here: where the C library's
// header checks arguments it defines those functions, too.
int open_of_this_program(const char* path, int flags, ...) __asm__("open");
int openat_of_this_program(int directory, const char* path, int flags, ...) __asm__("openat");
DIR* opendir_of_this_program(const char* path) __asm__("opendir");

namespace nimba::bench {
namespace {

constexpr std::string_view kDriverRoot = "/sys/kernel/debug/dri/0/qv";

std::string& replacement()
{
    static std::string path;
    return path;
}

// The path that stands for another.
class ReplacedPath final {
  public:
    explicit ReplacedPath(const char* path) : path_{path}
    {
        if (!replacement().empty() && std::string_view{path}.starts_with(kDriverRoot)) {
            replaced_ = replacement() + (path + kDriverRoot.size());
            path_ = replaced_.c_str();
        }
    }
    ReplacedPath(const ReplacedPath&) = delete;
    ReplacedPath& operator=(const ReplacedPath&) = delete;

    [[nodiscard]] const char* get() const { return path_; }

  private:
    std::string replaced_;
    const char* path_;
};

bool makes_file(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

}  // namespace

void replace_driver_root(const std::filesystem::path& tree)
{
    replacement() = tree;
}

}  // namespace nimba::bench

int open_of_this_program(const char* path, int flags, ...)
{
    static const auto next =
        reinterpret_cast<int (*)(const char*, int, ...)>(::dlsym(RTLD_NEXT, "open"));
    mode_t mode = 0;
    if (nimba::bench::makes_file(flags)) {
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return next(nimba::bench::ReplacedPath{path}.get(), flags, mode);
}

int openat_of_this_program(int directory, const char* path, int flags, ...)
{
    static const auto next =
        reinterpret_cast<int (*)(int, const char*, int, ...)>(::dlsym(RTLD_NEXT, "openat"));
    mode_t mode = 0;
    if (nimba::bench::makes_file(flags)) {
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return next(directory, nimba::bench::ReplacedPath{path}.get(), flags, mode);
}

DIR* opendir_of_this_program(const char* path)
{
    static const auto next = reinterpret_cast<DIR* (*)(const char*)>(::dlsym(RTLD_NEXT, "opendir"));
    return next(nimba::bench::ReplacedPath{path}.get());
}
