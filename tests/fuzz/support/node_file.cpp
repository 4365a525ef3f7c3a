// SPDX-License-Identifier: MIT
#include "fuzz/support/node_file.hpp"

#include "fuzz/support/check.hpp"

#include <sys/mman.h>

namespace nimba::fuzz {

NodeFile::NodeFile()
    : memory_{::memfd_create("node", MFD_CLOEXEC)},
      path_{"/proc/self/fd/" + std::to_string(memory_.get())}
{
}

void NodeFile::set(std::string_view text)
{
    const auto size = static_cast<ssize_t>(text.size());
    check(::ftruncate(memory_.get(), 0) == 0 &&
              ::pwrite(memory_.get(), text.data(), text.size(), 0) == size,
          "a node in memory can be written");
}

std::string NodeFile::text() const
{
    std::string text(static_cast<std::size_t>(::lseek(memory_.get(), 0, SEEK_END)), '\0');
    check(::pread(memory_.get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
          "a node in memory can be read");
    return text;
}

}  // namespace nimba::fuzz
