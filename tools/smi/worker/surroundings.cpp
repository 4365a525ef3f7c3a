// SPDX-License-Identifier: MIT
#include "tools/smi/worker/surroundings.hpp"

#include "tools/descriptor.hpp"
#include "tools/smi/text/output.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/worker/progress.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <sys/prctl.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace nimba::smi {
namespace {

constexpr std::string_view kSystemDirectories[] = {"/usr/sbin", "/sbin"};

bool has_directory(std::string_view path, std::string_view directory)
{
    while (true) {
        const auto colon = path.find(':');
        if (path.substr(0, colon) == directory) {
            return true;
        }
        if (colon == std::string_view::npos) {
            return false;
        }
        path.remove_prefix(colon + 1);
    }
}

// What the library started would outlive its worker.
void end_group(int /*signal*/)
{
    ::kill(0, SIGKILL);
}

}  // namespace

bool end_with_parent(int channel)
{
    struct sigaction action {};
    action.sa_handler = end_group;
    ::sigaction(SIGTERM, &action, nullptr);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    // A parent that ended before the line above sends no signal, but its end of the channel is
    // shut.
    pollfd peer{channel, 0, 0};
    return ::poll(&peer, 1, 0) == 0;
}

int arrange_surroundings(bool verbose, int complaints)
{
    const tools::Descriptor nothing{::open("/dev/null", O_RDWR | O_CLOEXEC)};
    if (!nothing || ::dup2(nothing.get(), STDIN_FILENO) < 0 ||
        ::dup2(verbose ? STDERR_FILENO : nothing.get(), STDOUT_FILENO) < 0) {
        return errno;
    }
    // The library's lines then come in order with the messages, which are not buffered.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const char* const path = std::getenv("PATH");
    const std::string extended = with_system_directories(path == nullptr ? "" : path);
    if (::setenv("PATH", extended.c_str(), 1) != 0) {
        return errno;
    }
    // Last, so that an error above can still be told.
    return verbose || ::dup2(complaints, STDERR_FILENO) >= 0 ? 0 : errno;
}

std::string with_system_directories(std::string_view path)
{
    std::string result{path};
    for (const std::string_view directory : kSystemDirectories) {
        if (!has_directory(result, directory)) {
            // An empty entry would mean the current directory.
            if (!result.empty()) {
                result += ':';
            }
            result += directory;
        }
    }
    return result;
}

int drop_message(const char* text, ...)
{
    note_message(text);
    return 0;
}

int show_message(const char* text, ...)
{
    note_message(text);
    return -write_all(STDERR_FILENO, printable_lines(text));
}

}  // namespace nimba::smi
