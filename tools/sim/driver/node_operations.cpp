// SPDX-License-Identifier: MIT
#include "driver/node_operations.hpp"

#include "driver/node_server.hpp"

#include <cerrno>
#include <exception>

namespace nimba::sim {
namespace {

// Calls the member for the request's server. libfuse cannot be left with an exception.
template <auto member>
struct Call;

template <typename... Arguments, void (NodeServer::*member)(fuse_req_t, Arguments...)>
struct Call<member> {
    static void answer(fuse_req_t request, Arguments... arguments)
    {
        try {
            (static_cast<NodeServer*>(fuse_req_userdata(request))->*member)(request, arguments...);
        } catch (const std::exception&) {
            fuse_reply_err(request, EIO);
        }
    }
};

// Nothing can be made, moved or removed, be it by root.
constexpr auto refuse = [](fuse_req_t request, auto...) { fuse_reply_err(request, EPERM); };

void begin_session(void* /*server*/, fuse_conn_info* connection)
{
    // Texts are short: pipes for each thread would cost more than they save.
    connection->want &=
        ~static_cast<unsigned>(FUSE_CAP_SPLICE_READ | FUSE_CAP_SPLICE_WRITE | FUSE_CAP_SPLICE_MOVE);
}

}  // namespace

fuse_lowlevel_ops node_operations()
{
    fuse_lowlevel_ops operations{};
    operations.init = begin_session;
    operations.lookup = Call<&NodeServer::look_up>::answer;
    operations.forget = Call<&NodeServer::forget>::answer;
    operations.forget_multi = Call<&NodeServer::forget_many>::answer;
    operations.getattr = Call<&NodeServer::get_attributes>::answer;
    operations.setattr = Call<&NodeServer::set_attributes>::answer;
    operations.open = Call<&NodeServer::open>::answer;
    operations.read = Call<&NodeServer::read>::answer;
    operations.write = Call<&NodeServer::write>::answer;
    operations.release = Call<&NodeServer::release>::answer;
    operations.opendir = Call<&NodeServer::open_directory>::answer;
    operations.readdir = Call<&NodeServer::read_directory>::answer;
    operations.releasedir = Call<&NodeServer::release>::answer;
    operations.mknod = refuse;
    operations.mkdir = refuse;
    operations.create = refuse;
    operations.symlink = refuse;
    operations.link = refuse;
    operations.rename = refuse;
    operations.unlink = refuse;
    operations.rmdir = refuse;
    return operations;
}

}  // namespace nimba::sim
