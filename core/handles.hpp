// SPDX-License-Identifier: MIT
// Owners of one descriptor, one stream, one command and one directory listing each.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace nimba {

// Owns a file descriptor; a negative one is none.
class Descriptor final {
  public:
    explicit Descriptor(int fd) : fd_{fd} {}
    Descriptor(Descriptor&& other) noexcept : fd_{other.release()} {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }

    explicit operator bool() const { return fd_ >= 0; }
    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] int release() { return std::exchange(fd_, -1); }

  private:
    int fd_;
};

struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

// Wraps a descriptor in a stream. Without a stream (no memory, or an empty descriptor) the
// descriptor is closed.
inline Stream make_stream(Descriptor descriptor, const char* mode)
{
    Stream stream{descriptor ? ::fdopen(descriptor.get(), mode) : nullptr};
    if (stream) {
        (void)descriptor.release();
    }
    return stream;
}

struct CommandCloser {
    void operator()(std::FILE* output) const { ::pclose(output); }
};
// The output of a command that runs; waits for its end.
using Command = std::unique_ptr<std::FILE, CommandCloser>;

// Starts a shell command. Empty when it cannot be started. Read its output through the descriptor:
// the stream takes a signal for the end.
inline Command start_command(const char* command)
{
    return Command{::popen(command, "re")};  // NOLINT(cert-env33-c): callers answer for the text
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

// As make_stream, for a listing.
inline Directory make_directory(Descriptor descriptor)
{
    Directory directory{descriptor ? ::fdopendir(descriptor.get()) : nullptr};
    if (directory) {
        (void)descriptor.release();
    }
    return directory;
}

}  // namespace nimba
