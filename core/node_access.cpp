// SPDX-License-Identifier: MIT
#include "core/node_access.hpp"

#include "core/handles.hpp"
#include "core/read_some.hpp"
#include "core/write_all.hpp"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

namespace nimba {
namespace {

// A page is what an attribute can hold. A node that goes on is not gathered in memory.
constexpr std::size_t kScannedSize = 4096;

Stream open_for_reading(int directory, const char* name)
{
    return make_stream(Descriptor{::openat(directory, name, O_RDONLY | O_CLOEXEC)}, "r");
}

// Through the descriptor: the stream would take a signal for the end.
std::size_t read_beginning(const Stream& node, char* buffer, std::size_t size)
{
    return read_until_full(::fileno(node.get()), buffer, size);
}

// printf's result and, if it is none of an error, the text.
[[gnu::format(printf, 1, 0)]] std::pair<int, std::string> formatted(const char* format,
                                                                    std::va_list values)
{
    std::va_list again;
    va_copy(again, values);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, values);
    return {length, std::move(text)};
}

}  // namespace

int read_node_at(int directory, const char* name, char* buffer, uint64_t size)
{
    const Stream node = open_for_reading(directory, name);
    return node ? static_cast<int>(read_beginning(node, buffer, size)) : 0;
}

int scanf_node_at(int directory, const char* name, const char* format, ...)
{
    const Stream node = open_for_reading(directory, name);
    if (!node) {
        return 0;
    }
    std::array<char, kScannedSize + 1> text{};
    const std::size_t length = read_beginning(node, text.data(), kScannedSize);
    // A NUL of the node is a character that does not fit, not the end.
    std::replace(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), '\0', '\1');
    std::va_list targets;
    va_start(targets, format);
    const int conversions = std::vsscanf(text.data(), format, targets);
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
    const auto [length, text] = formatted(format, values);
    va_end(values);
    // In one write, as each is a command to the driver. Through the descriptor: the stream would
    // lose the text to a signal.
    write_all(::fileno(node.get()), text);
    return length;
}

}  // namespace nimba
