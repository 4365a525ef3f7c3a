// SPDX-License-Identifier: MIT
// What the node functions do with their descriptor and with standard output.
#include "core/node_access.hpp"
#include "support/captured_stdout.hpp"
#include "support/descriptor.hpp"
#include "support/messages.hpp"
#include "support/temp_directory.hpp"

#include <dlfcn.h>
#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace nimba::test {
namespace {

using std::chrono_literals::operator""s;

bool streams_fail = false;

// No descriptor can be wrapped in a stream in its scope.
class FailingStreams final {
  public:
    FailingStreams() { streams_fail = true; }
    ~FailingStreams() { streams_fail = false; }
    FailingStreams(const FailingStreams&) = delete;
    FailingStreams& operator=(const FailingStreams&) = delete;
};

}  // namespace

// Stands before the C library's function in this program.
extern "C" std::FILE* fdopen(int fd, const char* mode) noexcept
{
    if (streams_fail) {
        errno = ENOMEM;
        return nullptr;
    }
    static const auto next =
        reinterpret_cast<std::FILE* (*)(int, const char*)>(::dlsym(RTLD_NEXT, "fdopen"));
    return next(fd, mode);
}

namespace {

class NodeDescriptor : public testing::Test {
  protected:
    std::string make_pipe() const
    {
        const std::string path = (nodes.path() / "pipe").string();
        if (::mkfifo(path.c_str(), 0600) != 0) {
            throw std::system_error{errno, std::generic_category(), "mkfifo"};
        }
        return path;
    }

    // Waits until the process holds a descriptor on `path` besides `own`; -1 after ten seconds.
    static int wait_for_descriptor_on(const std::string& path, int own)
    {
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        while (std::chrono::steady_clock::now() < deadline) {
            for (const int fd : descriptors_on(path)) {
                if (fd != own) {
                    return fd;
                }
            }
            std::this_thread::yield();
        }
        return -1;
    }

    struct Seen {
        bool opened;
        bool closes_on_exec;
    };

    // Runs `read` in a thread until it has opened the pipe, which then ends. Both of the pipe's
    // ends are held up to there, so that no side waits for the other in opening it.
    template <class Read>
    static Seen seen_until_end_of_file(const std::string& pipe, Read read)
    {
        std::optional<Descriptor> ends{std::in_place, ::open(pipe.c_str(), O_RDWR | O_CLOEXEC)};
        std::thread reader{read};
        const int fd = wait_for_descriptor_on(pipe, ends->get());
        const Seen seen{fd >= 0, closes_on_exec(fd)};
        ends.reset();
        reader.join();
        return seen;
    }

    TempDirectory nodes;
    Descriptor directory{::open(nodes.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
};

void fill(int pipe)
{
    const std::string block(4096, '.');
    while (::write(pipe, block.data(), block.size()) > 0) {
    }
}

// Everything that stands in the pipe.
std::string drain(int pipe)
{
    std::string text;
    std::array<char, 4096> block{};
    ssize_t count = 0;
    while ((count = ::read(pipe, block.data(), block.size())) > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
}

void use_every_function(int directory, const char* name)
{
    std::array<char, 8> buffer{};
    int value = 0;
    read_node_at(directory, name, buffer.data(), buffer.size());
    scanf_node_at(directory, name, "%d", &value);
    printf_node_at(directory, name, "%d", 1);
}

TEST_F(NodeDescriptor, IsClosedAfterSuccessAndAfterFailure)
{
    nodes.write("node", "1\n");
    nodes.write("empty", "");
    std::filesystem::create_directory(nodes.path() / "directory");
    const auto before = open_descriptors();
    for (const char* name : {"node", "empty", "directory", "missing", "/dev/full"}) {
        SCOPED_TRACE(name);
        use_every_function(directory.get(), name);
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST_F(NodeDescriptor, IsClosedWhenItCannotBeWrappedInAStream)
{
    const std::string path = nodes.write("node", "7\n");
    const auto before = open_descriptors();
    std::array<char, 4> buffer{'#', '#', '#', '\0'};
    int value = 42;
    int read = -1;
    int conversions = -1;
    int written = -1;
    {
        const FailingStreams failing;
        read = read_node_at(directory.get(), "node", buffer.data(), 3);
        conversions = scanf_node_at(directory.get(), "node", "%d", &value);
        written = printf_node_at(directory.get(), "node", "%d", 1);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(descriptors_on(path), std::set<int>{});
    EXPECT_EQ(read, 0);
    EXPECT_STREQ(buffer.data(), "###");
    EXPECT_EQ(conversions, 0);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(written, 0);
    EXPECT_EQ(nodes.read("node"), "7\n");
}

TEST_F(NodeDescriptor, IsNotInheritedWhileANodeIsRead)
{
    const std::string path = make_pipe();
    std::array<char, 4> buffer{};
    int count = -1;
    const Seen node = seen_until_end_of_file(
        path, [&] { count = read_node_at(0, path.c_str(), buffer.data(), 4); });
    EXPECT_TRUE(node.opened);
    EXPECT_TRUE(node.closes_on_exec);
    EXPECT_EQ(count, 0);
}

TEST_F(NodeDescriptor, IsNotInheritedWhileANodeIsScanned)
{
    const std::string path = make_pipe();
    int value = 42;
    int count = 42;
    const Seen node =
        seen_until_end_of_file(path, [&] { count = scanf_node_at(0, path.c_str(), "%d", &value); });
    EXPECT_TRUE(node.opened);
    EXPECT_TRUE(node.closes_on_exec);
    EXPECT_EQ(count, -1);
}

TEST_F(NodeDescriptor, IsNotInheritedWhileANodeIsWritten)
{
    const std::string path = make_pipe();
    const Descriptor pipe{::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)};
    fill(pipe.get());
    int count = -1;
    std::thread writer{[&] { count = printf_node_at(0, path.c_str(), "%d", 12); }};
    const int fd = wait_for_descriptor_on(path, pipe.get());
    const bool closes = closes_on_exec(fd);
    std::string text = drain(pipe.get());
    writer.join();
    text += drain(pipe.get());
    ASSERT_GE(fd, 0);
    EXPECT_TRUE(closes);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(text.substr(text.find_first_not_of('.')), "12");
}

TEST_F(NodeDescriptor, NodeFunctionsAreSilent)
{
    nodes.write("node", "1\n");
    pServerPrintCallback = keep_message;
    take_messages();
    const std::string written = stdout_of([&] {
        for (const char* name : {"node", "missing", "/dev/full", ""}) {
            use_every_function(directory.get(), name);
        }
    });
    EXPECT_EQ(written, "");
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
