// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

namespace nimba::test {

// An open descriptor, closed at the end of its scope.
class Descriptor final {
  public:
    explicit Descriptor(int fd) : fd_{fd}
    {
        if (fd_ < 0) {
            throw std::system_error{errno, std::generic_category(), "cannot open a descriptor"};
        }
    }
    ~Descriptor() { ::close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }

  private:
    int fd_;
};

// The process's open descriptors on `path`.
inline std::set<int> descriptors_on(const std::filesystem::path& path)
{
    std::set<int> found;
    for (const auto& entry : std::filesystem::directory_iterator{"/proc/self/fd"}) {
        std::error_code gone;  // the listing's own descriptor closes under our eyes
        if (std::filesystem::read_symlink(entry.path(), gone) == path) {
            found.insert(std::stoi(entry.path().filename().string()));
        }
    }
    return found;
}

// The number of descriptors that the process holds open; the listing's own counts each time alike.
inline std::ptrdiff_t open_descriptors()
{
    return std::distance(std::filesystem::directory_iterator{"/proc/self/fd"}, {});
}

inline bool closes_on_exec(int fd)
{
    return (::fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0;
}

}  // namespace nimba::test
