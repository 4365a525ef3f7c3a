// SPDX-License-Identifier: MIT
#include "support/closed_files.hpp"

#include "support/descriptor.hpp"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

namespace nimba::test {
namespace {

ClosedFiles* watch = nullptr;

// Looking opens and closes a directory, which is not looked at.
void look_at_closed(int fd)
{
    if (ClosedFiles* const watching = std::exchange(watch, nullptr)) {
        watching->look_at(fd);
        watch = watching;
    }
}

}  // namespace

ClosedFiles::ClosedFiles(std::string path) : path_{std::move(path)}
{
    watch = this;
}

ClosedFiles::~ClosedFiles()
{
    watch = nullptr;
}

void ClosedFiles::look_at(int fd)
{
    if (descriptors_on(path_).contains(fd)) {
        closes_on_exec_.push_back(nimba::test::closes_on_exec(fd));
    }
}

}  // namespace nimba::test

extern "C" int close(int fd)
{
    nimba::test::look_at_closed(fd);
    static const auto next = reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, "close"));
    return next(fd);
}

extern "C" int fclose(std::FILE* stream)
{
    nimba::test::look_at_closed(::fileno(stream));
    static const auto next = reinterpret_cast<int (*)(std::FILE*)>(::dlsym(RTLD_NEXT, "fclose"));
    return next(stream);
}
