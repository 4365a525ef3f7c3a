// SPDX-License-Identifier: MIT
// Sees which entries of some directories any program opens, in order.
#pragma once

#include "support/descriptor.hpp"
#include "support/messages.hpp"

#include <sys/inotify.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace nimba::test {

class OpenJournal final {
  public:
    // `directory` is one that the kernel knows: a simulated machine's is in its own directory.
    void watch(const std::filesystem::path& directory)
    {
        // An opening is told apart from the next one of the same entry by the closing between them.
        if (::inotify_add_watch(queue_.get(), directory.c_str(),
                                IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0) {
            throw std::runtime_error{"cannot watch " + directory.string()};
        }
    }

    // The names of what was opened since the last call, in order.
    Texts taken()
    {
        Texts names;
        alignas(inotify_event) std::array<char, 65536> bytes{};
        ssize_t count = 0;
        while ((count = ::read(queue_.get(), bytes.data(), bytes.size())) > 0) {
            for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
                inotify_event event{};
                std::memcpy(&event, bytes.data() + at, sizeof event);
                if ((event.mask & IN_OPEN) != 0 && event.len > 0) {
                    names.emplace_back(bytes.data() + at + sizeof event);
                }
                at += sizeof event + event.len;
            }
        }
        return names;
    }

  private:
    Descriptor queue_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
};

}  // namespace nimba::test
