// SPDX-License-Identifier: MIT
#include "bench/standard_output.hpp"

#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace nimba::bench {

tools::Descriptor claim_standard_output()
{
    ::__fpurge(stdout);
    tools::Descriptor output{::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
    if (output.get() < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        throw std::system_error{errno, std::generic_category(), "standard output"};
    }
    return output;
}

void write_text(const tools::Descriptor& output, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(output.get(), text.data(), text.size());
        if (written < 0) {
            throw std::system_error{errno, std::generic_category(), "standard output"};
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace nimba::bench
