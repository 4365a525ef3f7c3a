// SPDX-License-Identifier: MIT
#include "tools/smi/text/output.hpp"

#include "tools/smi/text/printable.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include <cerrno>

namespace nimba::smi {

void keep_standard_descriptors()
{
    // open gives the lowest free number: the loop ends with the first beyond standard error.
    int fd = -1;
    do {
        fd = ::open("/dev/null", O_RDONLY);
    } while (fd >= 0 && fd <= STDERR_FILENO);
    if (fd >= 0) {
        ::close(fd);
    }
}

int write_all(int fd, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(fd, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void print_error_line(std::string_view message)
{
    // There is nobody left to tell when standard error cannot be written.
    static_cast<void>(write_all(STDERR_FILENO, fmt::format("nimba-smi: {}\n", printable(message))));
}

}  // namespace nimba::smi
