// SPDX-License-Identifier: MIT
#include "driver/node_file_system.hpp"

#include "driver/fuse.hpp"
#include "driver/node_operations.hpp"
#include "driver/node_server.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/mount.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace nimba::sim {
namespace {

// So many requests are answered at once, those that wait for a driver among them.
constexpr std::size_t kMostThreads = 256;
static_assert(kMostThreads > Pauses::kMost);

// libfuse makes the memory of a request when it first receives one.
struct Request {
    Request() = default;
    ~Request() { std::free(buffer.mem); }  // NOLINT(cppcoreguidelines-no-malloc)
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    fuse_buf buffer{};
};

fuse_session* make_session(NodeServer& server)
{
    std::string name = "nimba-sim";
    std::array<char*, 2> words{name.data(), nullptr};
    fuse_args arguments = FUSE_ARGS_INIT(1, words.data());
    const fuse_lowlevel_ops operations = node_operations();
    fuse_session* const session =
        fuse_session_new(&arguments, &operations, sizeof(operations), &server);
    fuse_opt_free_args(&arguments);  // libfuse has put copies there
    return session;
}

}  // namespace

void NodeFileSystem::SessionEnd::operator()(fuse_session* session) const
{
    fuse_session_destroy(session);
}

NodeFileSystem::NodeFileSystem(NodeSource& source, FaultPlan& faults,
                               const std::filesystem::path& directory)
    : mount_{directory},
      server_{std::make_unique<NodeServer>(source, faults)},
      session_{make_session(*server_)}
{
    tools::Descriptor connection = mount_.take_connection();
    // libfuse takes a connection that was made elsewhere under this name.
    const std::string place = "/dev/fd/" + std::to_string(connection.get());
    // Waits for nobody, even behind a preload library that looks at what open(2) is asked for: no
    // thread answers yet.
    root_ = tools::Descriptor{open_tree(AT_FDCWD, directory.c_str(), OPEN_TREE_CLOEXEC)};
    if (!session_ || !root_ || fuse_session_mount(session_.get(), place.c_str()) != 0) {
        throw MountError{"cannot make a session"};
    }
    (void)connection.release();  // the session closes it
    start_thread();
}

NodeFileSystem::~NodeFileSystem()
{
    server_->end_pauses();
    {
        const std::scoped_lock lock{threads_mutex_};
        stopping_ = true;
    }
    std::thread knocking{[this] { knock(); }};
    for (std::thread& thread : threads_) {  // none is added any more
        thread.join();
    }
    session_.reset();  // answers the last knock, if nobody was left for it
    knocking.join();
}

// Threads that wait for a request end with the next one that comes: lets it come.
void NodeFileSystem::knock()
{
    struct stat ignored {};
    while (working_ > 0) {
        fstatat(root_.get(), "no-such-node", &ignored, 0);
    }
}

void NodeFileSystem::start_thread()
{
    const std::scoped_lock lock{threads_mutex_};
    if (stopping_ || threads_.size() == kMostThreads) {
        return;
    }
    ++idle_;
    ++working_;
    try {
        threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        --idle_;
        --working_;
        if (threads_.empty()) {
            throw;
        }
    }
}

// A thread that has received a request answers it itself; the last one that could receive the next
// request gets company first.
void NodeFileSystem::work()
{
    Request request;
    while (!stopping_) {
        const int length = fuse_session_receive_buf(session_.get(), &request.buffer);
        if (length == -EINTR || length == -EAGAIN) {
            continue;
        }
        if (length <= 0) {  // unmounted by somebody else
            break;
        }
        if (--idle_ == 0) {
            start_thread();
        }
        fuse_session_process_buf(session_.get(), &request.buffer);
        ++idle_;
    }
    --working_;
}

}  // namespace nimba::sim
