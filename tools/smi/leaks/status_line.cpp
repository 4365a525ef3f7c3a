// SPDX-License-Identifier: MIT
#include "tools/smi/leaks/status_line.hpp"

#include "tools/smi/text/output.hpp"
#include "tools/smi/text/terminal.hpp"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace nimba::smi {
namespace {

constexpr std::string_view kClear = "\r\x1b[K";
constexpr std::size_t kUsualColumns = 80;

bool can_clear_a_line(int fd)
{
    const char* const terminal = std::getenv("TERM");
    return ::isatty(fd) == 1 && terminal != nullptr && std::string_view{terminal} != "dumb";
}

}  // namespace

StatusLine::StatusLine(int fd) : fd_{fd}, visible_{can_clear_a_line(fd)} {}

StatusLine::~StatusLine()
{
    if (shown_) {
        show({});
    }
}

void StatusLine::show(std::string_view text)
{
    if (visible_) {
        shown_ = true;
        // The cursor stands behind the text and needs a column, too.
        const std::size_t columns = terminal_columns(fd_).value_or(kUsualColumns);
        const std::string_view shown = text.substr(0, columns - 1);
        static_cast<void>(write_all(fd_, std::string{kClear}.append(shown)));
    }
}

}  // namespace nimba::smi
