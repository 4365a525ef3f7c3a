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
#include "simulation.hpp"
#include "test_bed_error.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <fmt/core.h>
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
    environment.prepend("PATH", (installation.stand_ins / "bin").native(), ':');
    environment.append("PATH", installation.programs.native(), ':');
    // Where dmidecode is, which an ordinary user's own list does not lead to.
    environment.append("PATH", "/usr/sbin", ':');
    // The address sanitizer refuses to start behind a preload library.
    environment.append("ASAN_OPTIONS", "verify_asan_link_order=0", ':');
}

struct Run {
    const Scene& scene;
    const std::vector<std::string>& command;
    const Installation& installation;
    Drivers drivers;
    const Inheritance& inheritance;
    pid_t starter;  // the process that waits for this one
};

int run_command_on_machine(const Run& run, const std::filesystem::path& directory)
{
    Environment environment{environ};
    require_preload();
    end_on_glib_warnings();
    Simulation simulation =
        simulate(run.scene.machine, run.scene.make_driver, directory, run.drivers);
    set_up_environment(environment, *simulation.test_bed, run.installation);
    install_kernel_interfaces(run.scene.machine.kernel_interfaces,
                              run.installation.stand_ins / "kernel_interface.so", directory / "lib",
                              environment);
    if (run.scene.furnish) {
        run.scene.furnish(directory, environment);
    }
    drop_glib_warnings();
    const int status = run_command(run.command, environment, run.inheritance, run.starter);
    // Its threads end with this process, at once, and its files with the directory.
    (void)simulation.test_bed.release();
    return status;
}

// In a process of its own, and leaves it. The starting process removes the directory; if it has
// ended before, this one does.
[[noreturn]] void serve(const Run& run, RunDirectory& directory)
{
    int status = kNoTestBed;
    try {
        status = run_command_on_machine(run, directory.path());
    } catch (const std::exception& error) {
        complain(error.what());
    }
    if (getppid() != run.starter) {
        directory.remove();
    }
    _exit(status);
}

}  // namespace

Installation find_installation()
{
    const std::filesystem::path programs =
        std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return {programs, (programs / NIMBA_SIM_MACHINES).lexically_normal(),
            (programs / NIMBA_SIM_STAND_INS).lexically_normal()};
}

int run_on_machine(const Scene& scene, const std::vector<std::string>& command,
                   const Installation& installation, Drivers drivers)
{
    const Inheritance inheritance = prepare_for_run();
    RunDirectory directory;
    if (const auto signal = take_pending_signal()) {
        return kSignalled + *signal;
    }
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child < 0) {
        throw TestBedError{fmt::format("cannot make a process: {}", std::strerror(errno))};
    }
    if (child == 0) {
        signal_end_of_parent();
        serve({scene, command, installation, drivers, inheritance, self}, directory);
    }
    const int status = wait_for_child(child);
    if (WIFSIGNALED(status)) {
        throw TestBedError{fmt::format("the simulated machine was ended by signal {} ({})",
                                       WTERMSIG(status), strsignal(WTERMSIG(status)))};
    }
    return WEXITSTATUS(status);
}

}  // namespace nimba::sim
