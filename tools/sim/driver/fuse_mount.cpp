// SPDX-License-Identifier: MIT
#include "driver/fuse_mount.hpp"

#include "fusermount.hpp"
#include "unmount.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>
#include <sys/mount.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDevice = "/dev/fuse";
constexpr const char* kName = "nimba-sim";
constexpr const char* kType = "fuse.nimba-sim";

// Returns no descriptor where this process may not mount.
tools::Descriptor mount_directly(const fs::path& directory, std::string& problem)
{
    tools::Descriptor connection{open(kDevice, O_RDWR | O_CLOEXEC)};
    if (!connection) {
        problem = fmt::format("{}: {}", kDevice, std::strerror(errno));
        return tools::Descriptor{};
    }
    const std::string options =
        fmt::format("fd={},rootmode=40000,user_id={},group_id={},default_permissions,allow_other",
                    connection.get(), geteuid(), getegid());
    if (mount(kName, directory.c_str(), kType, MS_NOSUID | MS_NODEV, options.c_str()) != 0) {
        problem = fmt::format("mounting: {}", std::strerror(errno));
        return tools::Descriptor{};
    }
    return connection;
}

tools::Descriptor receive_descriptor(int socket)
{
    char byte = 0;
    iovec part{&byte, 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    if (recvmsg(socket, &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT) <= 0) {
        return tools::Descriptor{};
    }
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS) {
        return tools::Descriptor{};
    }
    int fd = -1;
    std::memcpy(&fd, CMSG_DATA(header), sizeof(fd));
    return tools::Descriptor{fd};
}

// The program has ended, and so has sent what it will, when the connection is looked for.
tools::Descriptor mount_with_fusermount(const fs::path& directory, std::string& problem)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        problem = fmt::format("cannot make a socket: {}", std::strerror(errno));
        return tools::Descriptor{};
    }
    const tools::Descriptor receiver{ends[0]};
    const tools::Descriptor sender{ends[1]};
    const FusermountResult result = run_fusermount(
        {"-o", fmt::format("nosuid,nodev,default_permissions,fsname={0},subtype={0}", kName), "--",
         directory.native()},
        sender.get());
    problem = result.message;
    return result.done ? receive_descriptor(receiver.get()) : tools::Descriptor{};
}

}  // namespace

FuseMount::FuseMount(fs::path directory) : directory_{std::move(directory)}
{
    std::string problem;
    connection_ = mount_directly(directory_, problem);
    if (!connection_) {
        std::string second_problem;
        connection_ = mount_with_fusermount(directory_, second_problem);
        problem += "; " + second_problem;
    }
    if (!connection_) {
        throw MountError{problem};
    }
}

FuseMount::~FuseMount()
{
    unmount(directory_);
}

}  // namespace nimba::sim
