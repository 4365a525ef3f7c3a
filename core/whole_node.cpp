// SPDX-License-Identifier: MIT
#include "core/whole_node.hpp"

#include "core/handles.hpp"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace nimba {
namespace {

constexpr std::size_t kUsualSize = 4096;

}  // namespace

bool read_whole_node(int directory, const char* name, std::string& text)
{
    text.clear();
    const Descriptor node{::openat(directory, name, O_RDONLY | O_CLOEXEC)};
    if (!node) {
        return false;
    }
    std::size_t held = 0;
    while (true) {
        if (held == text.size()) {
            text.resize(std::max(2 * held, kUsualSize));
        }
        const ssize_t count = ::read(node.get(), text.data() + held, text.size() - held);
        if (count == 0) {
            text.resize(held);
            return true;
        }
        if (count > 0) {
            held += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return false;
        }
    }
}

}  // namespace nimba
