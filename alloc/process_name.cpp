// SPDX-License-Identifier: MIT
// The name of a process, from its command line.
#include "core/handles.hpp"
#include "core/read_some.hpp"
#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace nimba {
namespace {

// Copies as much of the text as fits with a NUL; nothing where nothing fits.
void copy_text(std::string_view text, char* destination, int32_t size)
{
    if (size > 0) {
        const auto length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
        std::copy_n(text.data(), length, destination);
        destination[length] = '\0';
    }
}

// "long-name" of "/some/where/long-name --option".
std::string_view last_component(std::string_view program)
{
    const std::string_view path = program.substr(0, program.find(' '));
    return path.substr(path.rfind('/') + 1);
}

// The words end in NULs, the line in a newline, which belongs to it.
std::string_view first_word(std::string_view text)
{
    const std::string_view word = text.substr(0, text.find('\0'));
    const std::size_t newline = word.find('\n');
    return newline == std::string_view::npos ? word : word.substr(0, newline + 1);
}

}  // namespace
}  // namespace nimba

int32_t getPackageNameFromPid(int32_t pid, char* destination, int32_t size)
{
    char path[256];
    std::snprintf(path, sizeof path, "/proc/%d/cmdline", pid);
    const nimba::Stream node{std::fopen(path, "re")};
    if (!node) {
        nimba::copy_text("", destination, size);
        return 0;
    }
    char text[511];
    // Through the descriptor: the stream would take a signal for the end.
    const std::size_t length = nimba::read_until_full(::fileno(node.get()), text, sizeof text);
    if (length == 0) {
        return -1;
    }
    const std::string_view program = nimba::first_word({text, length});
    // A name that fits is whole, directory included; callers rely on the difference.
    const bool fits = static_cast<int64_t>(program.size()) < size;
    nimba::copy_text(fits ? program : nimba::last_component(program), destination, size);
    return 0;
}
