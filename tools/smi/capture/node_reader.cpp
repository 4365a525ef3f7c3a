// SPDX-License-Identifier: MIT
#include "tools/smi/capture/node_reader.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kRead = 'r';
constexpr char kList = 'l';
constexpr mode_t kPermissions = 0777;

// What goes over the channel before a path, and before a text.
struct Question {
    char kind;
    uint64_t limit;
    uint64_t path_size;
};
struct Header {
    int32_t error;
    uint32_t mode;
    uint32_t cut;
    uint64_t size;
};

bool send_whole(int channel, const void* bytes, std::size_t size)
{
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = ::send(channel, next, size, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        next += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// Waits for each piece until `end`, if there is one.
bool receive_whole(int channel, void* bytes, std::size_t size, std::optional<Clock::time_point> end)
{
    char* next = static_cast<char*>(bytes);
    while (size > 0) {
        if (end) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count();
            pollfd readable{channel, POLLIN, 0};
            if (::poll(&readable, 1, static_cast<int>(std::max<int64_t>(left, 0))) == 0) {
                return false;
            }
        }
        const ssize_t count = ::recv(channel, next, size, end ? MSG_DONTWAIT : 0);
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        next += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

uint32_t permissions(int fd)
{
    struct stat status {};
    return ::fstat(fd, &status) == 0 ? status.st_mode & kPermissions : 0;
}

// What is behind the limit is asked for, so that a text that ends there is told from one that does
// not.
Header read_file(const char* path, std::size_t limit, std::string& text)
{
    const tools::Descriptor file{::open(path, O_RDONLY | O_CLOEXEC)};
    if (!file) {
        return {errno, 0, 0, 0};
    }
    // Most nodes are small, and asking for much costs more than what comes.
    constexpr std::size_t kFirstPiece = 4096;
    constexpr std::size_t kLargestPiece = 1U << 20U;
    static std::vector<char> buffer(kFirstPiece);
    for (std::size_t piece = kFirstPiece; text.size() <= limit;) {
        const std::size_t wanted = std::min(limit + 1 - text.size(), piece);
        if (wanted > buffer.size()) {
            buffer.resize(wanted);
        }
        const ssize_t count = ::read(file.get(), buffer.data(), wanted);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return {errno, 0, 0, 0};
        }
        if (count == 0) {
            break;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
        piece = std::min(2 * piece, kLargestPiece);
    }
    const bool cut = text.size() > limit;
    text.resize(std::min(text.size(), limit));
    return {0, permissions(file.get()), cut ? 1U : 0U, text.size()};
}

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

// The names, each with a NUL behind it.
Header list_directory(const char* path, std::string& names)
{
    const std::unique_ptr<DIR, CloseListing> listing{::opendir(path)};
    if (!listing) {
        return {errno, 0, 0, 0};
    }
    errno = 0;
    while (const dirent* const entry = ::readdir(listing.get())) {
        const std::string name{entry->d_name};
        if (name != "." && name != "..") {
            names.append(name).push_back('\0');
        }
        errno = 0;
    }
    return {errno, permissions(::dirfd(listing.get())), 0, names.size()};
}

// The process that reads: answers until the other end is closed.
[[noreturn]] void serve(int channel)
{
    Question question{};
    std::string path;
    std::string text;
    while (receive_whole(channel, &question, sizeof question, std::nullopt)) {
        path.resize(question.path_size);
        text.clear();
        if (!receive_whole(channel, path.data(), path.size(), std::nullopt)) {
            break;
        }
        Header header = question.kind == kRead ? read_file(path.c_str(), question.limit, text)
                                               : list_directory(path.c_str(), text);
        header.size = header.error == 0 ? text.size() : 0;
        if (!send_whole(channel, &header, sizeof header) ||
            !send_whole(channel, text.data(), header.size)) {
            break;
        }
    }
    ::_exit(EXIT_SUCCESS);
}

}  // namespace

struct DeadlineReader::Answer {
    int error = kNoAnswer;
    mode_t mode = 0;
    bool cut = false;
    std::string text;
};

ReadNode DeadlineReader::read(const std::string& path, std::size_t limit)
{
    Answer answer = ask(kRead, path, limit);
    return {answer.error, answer.mode, answer.cut, std::move(answer.text)};
}

ListedNode DeadlineReader::list(const std::string& path)
{
    const Answer answer = ask(kList, path, 0);
    ListedNode listed{answer.error, answer.mode, {}};
    for (std::size_t begin = 0; begin < answer.text.size();) {
        const std::size_t end = answer.text.find('\0', begin);
        listed.names.push_back(answer.text.substr(begin, end - begin));
        begin = end + 1;
    }
    return listed;
}

DeadlineReader::Answer DeadlineReader::ask(char question, const std::string& path,
                                           std::size_t limit)
{
    if (!channel_) {
        start();
    }
    const auto end = Clock::now() + timeout_;
    const Question asked{question, limit, path.size()};
    Header header{};
    Answer answer;
    bool done = send_whole(channel_.get(), &asked, sizeof asked) &&
                send_whole(channel_.get(), path.data(), path.size()) &&
                receive_whole(channel_.get(), &header, sizeof header, end);
    if (done) {
        answer.text.resize(header.size);
        done = receive_whole(channel_.get(), answer.text.data(), answer.text.size(), end);
    }
    if (!done) {
        give_up();
        return {};
    }
    answer.error = header.error;
    answer.mode = header.mode;
    answer.cut = header.cut != 0;
    return answer;
}

void DeadlineReader::start()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throw std::system_error{errno, std::generic_category(), "cannot make a channel"};
    }
    channel_ = tools::Descriptor{ends[0]};
    const tools::Descriptor other{ends[1]};
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ < 0) {
        throw std::system_error{errno, std::generic_category(), "cannot start a process"};
    }
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::setpgid(0, 0);  // what the terminal sends is the parent's affair
        ::close(ends[0]);
        if (::getppid() == parent) {
            serve(ends[1]);
        }
        ::_exit(EXIT_SUCCESS);
    }
}

// One that the kernel does not let go is left behind.
void DeadlineReader::give_up()
{
    if (pid_ < 0) {
        return;
    }
    channel_.reset();
    ::kill(pid_, SIGKILL);
    constexpr int kTries = 100;
    constexpr useconds_t kPause = 10'000;
    for (int i = 0; i < kTries && ::waitpid(pid_, nullptr, WNOHANG) == 0; ++i) {
        ::usleep(kPause);
    }
    pid_ = -1;
}

}  // namespace nimba::smi
