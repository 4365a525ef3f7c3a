// SPDX-License-Identifier: MIT
#include "tools/smi/worker/complaints.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace nimba::smi {

tools::Descriptor make_complaint_memory()
{
    tools::Descriptor memory{::memfd_create("nimba-smi complaints", MFD_CLOEXEC)};
    if (memory && ::fcntl(memory.get(), F_SETFL, O_APPEND) != 0) {
        return {};
    }
    return memory;
}

void forget_complaints(int memory)
{
    // What cannot be forgotten is only shown again.
    [[maybe_unused]] const int result = ::ftruncate(memory, 0);
}

std::string last_line_in(int memory)
{
    std::array<char, 300> bytes{};
    struct stat status {};
    if (::fstat(memory, &status) != 0) {
        return {};
    }
    const off_t begin = std::max<off_t>(0, status.st_size - static_cast<off_t>(bytes.size()));
    const ssize_t length = ::pread(memory, bytes.data(), bytes.size(), begin);
    std::string_view text{bytes.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
    while (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    return std::string{text.substr(text.rfind('\n') + 1)};
}

}  // namespace nimba::smi
