// SPDX-License-Identifier: MIT
#include "tools/smi/worker/worker.hpp"

#include "tools/smi/text/output.hpp"
#include "tools/smi/worker/requests.hpp"
#include "tools/smi/worker/surroundings.hpp"

#include <cxxabi.h>
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <exception>

namespace nimba::smi {
namespace {

constexpr int kUsageStatus = static_cast<int>(ExitStatus::kUsage);

bool is_socket(int fd)
{
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

// The name of the exception that is being handled, which may be of any type.
std::string thrown_type()
{
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (type == nullptr) {
        return "an unknown exception";
    }
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name{
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free};
    return status == 0 ? name.get() : type->name();
}

Failure thrown_failure(const Session& session, std::string what)
{
    return {ExitStatus::kWorkerLost, session.current_call(), std::move(what)};
}

// Serves requests; ends when the tool hangs up, or after an exception, which leaves the library in
// an unknown state.
void serve(Session& session, Channel& channel)
{
    while (const auto line = channel.receive_line()) {
        try {
            channel.send(answer_request(session, decode_request(*line).value_or("")));
        } catch (const std::exception& exception) {
            const auto what = fmt::format("it threw {}: {}", thrown_type(), exception.what());
            channel.send(thrown_failure(session, what));
            return;
        } catch (...) {
            channel.send(thrown_failure(session, "it threw " + thrown_type()));
            return;
        }
    }
}

}  // namespace

int run_worker(int count, char** arguments)
{
    WorkerOptions options;
    CLI::App app;
    app.add_flag("--worker");
    app.add_option("--library", options.library)->required();
    ServedAdapter adapter;
    auto* const slot = app.add_option("--slot", adapter.slot);
    app.add_option("--bus-id", adapter.bus_id)->needs(slot);
    app.add_flag("--verbose", options.verbose);
    try {
        app.parse(count, arguments);
        if (slot->count() > 0) {
            options.adapter = adapter;
        }
    } catch (const CLI::ParseError&) {
        options.library.clear();
    }
    if (options.library.empty() || !is_socket(kWorkerChannel)) {
        print_error_line("--worker is for nimba-smi's own use; see nimba-smi --help");
        return kUsageStatus;
    }
    ::fcntl(kWorkerChannel, F_SETFD, FD_CLOEXEC);
    // The process was started through /proc/self/exe and would be listed as "exe".
    ::prctl(PR_SET_NAME, "nimba-smi");
    if (!end_with_parent(kWorkerChannel)) {
        return EXIT_SUCCESS;
    }
    const SharedProgress progress = map_progress(kWorkerProgress);
    if (const int error =
            progress ? arrange_surroundings(options.verbose, kWorkerComplaints) : errno;
        error != 0) {
        print_error_line(fmt::format("a worker cannot be set up: {}", std::strerror(error)));
        return EXIT_FAILURE;
    }
    ::close(kWorkerProgress);
    ::fcntl(kWorkerComplaints, F_SETFD, FD_CLOEXEC);
    Channel channel{kWorkerChannel};
    Session session{std::move(options), channel, *progress, kWorkerComplaints};
    serve(session, channel);
    return EXIT_SUCCESS;
}

}  // namespace nimba::smi
