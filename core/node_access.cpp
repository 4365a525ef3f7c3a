// SPDX-License-Identifier: MIT
#include "core/node_access.hpp"

#include "core/handles.hpp"

#include <fcntl.h>

#include <cstdarg>
#include <cstdio>

namespace nimba {
namespace {

Stream open_for_reading(int directory, const char* name)
{
    return make_stream(Descriptor{::openat(directory, name, O_RDONLY | O_CLOEXEC)}, "r");
}

}  // namespace

int read_node_at(int directory, const char* name, char* buffer, uint64_t size)
{
    const Stream node = open_for_reading(directory, name);
    return node ? static_cast<int>(std::fread(buffer, 1, size, node.get())) : 0;
}

int scanf_node_at(int directory, const char* name, const char* format, ...)
{
    const Stream node = open_for_reading(directory, name);
    if (!node) {
        return 0;
    }
    std::va_list targets;
    va_start(targets, format);
    const int conversions = std::vfscanf(node.get(), format, targets);
    va_end(targets);
    return conversions;
}

int printf_node_at(int directory, const char* name, const char* format, ...)
{
    const Stream node =
        make_stream(Descriptor{::openat(directory, name, O_WRONLY | O_CLOEXEC)}, "w");
    if (!node) {
        return 0;
    }
    std::va_list values;
    va_start(values, format);
    const int written = std::vfprintf(node.get(), format, values);
    va_end(values);
    return written;
}

}  // namespace nimba
