// SPDX-License-Identifier: MIT
#include "tools/smi/text/terminal.hpp"

#include <unistd.h>

#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string>

namespace nimba::smi {

std::optional<std::size_t> terminal_columns(int fd)
{
    winsize size{};
    return ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0
               ? std::optional<std::size_t>(size.ws_col)
               : std::nullopt;
}

bool is_utf8(const LocaleSetting& setting)
{
    const std::array variables{setting.lc_all, setting.lc_ctype, setting.lang};
    const auto* const first = std::ranges::find_if(
        variables, [](const char* value) { return value != nullptr && *value != '\0'; });
    if (first == variables.end()) {
        return false;
    }
    std::string name{*first};
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name.find("utf-8") != std::string::npos || name.find("utf8") != std::string::npos;
}

bool shows_utf8(int fd)
{
    return ::isatty(fd) == 1 &&
           is_utf8({std::getenv("LC_ALL"), std::getenv("LC_CTYPE"), std::getenv("LANG")});
}

}  // namespace nimba::smi
