// SPDX-License-Identifier: MIT
#include "core/whole_node.hpp"

#include "core/handles.hpp"
#include "core/read_some.hpp"

#include <fcntl.h>

#include <algorithm>

namespace nimba {
namespace {

constexpr std::size_t kUsualSize = 4096;

}  // namespace

bool read_to_end(int descriptor, std::string& text)
{
    text.clear();
    std::size_t held = 0;
    ssize_t count = -1;
    do {
        if (held == text.size()) {
            text.resize(std::max(2 * held, kUsualSize));
        }
        count = read_some(descriptor, text.data() + held, text.size() - held);
        held += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    } while (count > 0);
    text.resize(held);
    return count == 0;
}

bool read_whole_node(int directory, const char* name, std::string& text)
{
    const Descriptor node{::openat(directory, name, O_RDONLY | O_CLOEXEC)};
    return node && read_to_end(node.get(), text);
}

}  // namespace nimba
