// SPDX-License-Identifier: MIT
#include "tools/smi/text/terminal.hpp"

#include <sys/ioctl.h>

namespace nimba::smi {

std::optional<std::size_t> terminal_columns(int fd)
{
    winsize size{};
    return ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0
               ? std::optional<std::size_t>(size.ws_col)
               : std::nullopt;
}

}  // namespace nimba::smi
