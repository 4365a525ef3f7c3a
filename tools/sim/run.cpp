// SPDX-License-Identifier: MIT
#include "run.hpp"

#include "command.hpp"
#include "environment.hpp"
#include "exit_status.hpp"
#include "glib_messages.hpp"
#include "inheritance.hpp"
#include "kernel_interface.hpp"
#include "message.hpp"
#include "run_directory.hpp"
#include "signals.hpp"
#include "test_bed.hpp"
#include "test_bed_error.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <string_view>

namespace nimba::sim {
namespace {

constexpr std::string_view kPreload = "libumockdev-preload.so.0";

// The loader only warns about a preload library that it cannot find, and the command would then see
// the real machine.
void require_preload()
{
    struct Close {
        void operator()(void* library) const { dlclose(library); }
    };
    if (!std::unique_ptr<void, Close>{dlopen(kPreload.data(), RTLD_LAZY | RTLD_LOCAL)}) {
        throw TestBedError{fmt::format("{}; install umockdev", dlerror())};
    }
}

void set_up_environment(Environment& environment, const TestBed& test_bed,
                        const Installation& installation)
{
    environment.prepend("LD_PRELOAD", kPreload, ' ');
    environment.set("UMOCKDEV_DIR", test_bed.root().native());
    if (!environment.has("PATH")) {
        environment.set("PATH", default_path());
    }
    environment.append("PATH", installation.programs.native(), ':');
    // The address sanitizer refuses to start behind a preload library.
    environment.append("ASAN_OPTIONS", "verify_asan_link_order=0", ':');
}

// In a process of its own. Leaves it without taking the test bed apart: its threads end with it,
// and the starting process removes the directory.
[[noreturn]] void serve(const Machine& machine, const std::vector<std::string>& command,
                        const Installation& installation, const std::filesystem::path& directory,
                        const Inheritance& inheritance)
{
    try {
        Environment environment{environ};
        require_preload();
        end_on_glib_warnings();
        const TestBed test_bed{machine, directory};
        set_up_environment(environment, test_bed, installation);
        install_kernel_interfaces(machine.kernel_interfaces, installation.stand_ins,
                                  directory / "lib", environment);
        drop_glib_warnings();
        _exit(run_command(command, environment, inheritance));
    } catch (const std::exception& error) {
        complain(error.what());
        _exit(kNoTestBed);
    }
}

}  // namespace

Installation find_installation()
{
    const std::filesystem::path programs =
        std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return {programs, (programs / NIMBA_SIM_MACHINES).lexically_normal(),
            (programs / NIMBA_SIM_STAND_INS).lexically_normal()};
}

int run_on_machine(const Machine& machine, const std::vector<std::string>& command,
                   const Installation& installation)
{
    const Inheritance inheritance = prepare_for_run();
    const RunDirectory directory;
    if (const auto signal = take_pending_signal()) {
        return kSignalled + *signal;
    }
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child < 0) {
        throw TestBedError{fmt::format("cannot make a process: {}", std::strerror(errno))};
    }
    if (child == 0) {
        end_with_parent(self);
        serve(machine, command, installation, directory.path(), inheritance);
    }
    const int status = wait_for_child(child);
    if (WIFSIGNALED(status)) {
        throw TestBedError{fmt::format("the simulated machine was ended by signal {} ({})",
                                       WTERMSIG(status), strsignal(WTERMSIG(status)))};
    }
    return WEXITSTATUS(status);
}

}  // namespace nimba::sim
