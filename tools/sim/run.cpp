// SPDX-License-Identifier: MIT
#include "run.hpp"

#include "command.hpp"
#include "environment.hpp"
#include "kernel_interface.hpp"
#include "run_directory.hpp"
#include "test_bed.hpp"
#include "test_bed_error.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <fmt/format.h>

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
    environment.append("PATH", installation.programs.native(), ':');
    // The address sanitizer refuses to start behind a preload library.
    environment.append("ASAN_OPTIONS", "verify_asan_link_order=0", ':');
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
    const sigset_t mask = hold_signals();
    Environment environment{environ};
    require_preload();
    const RunDirectory directory;
    const TestBed test_bed{machine, directory.path()};
    set_up_environment(environment, test_bed, installation);
    install_kernel_interfaces(machine.kernel_interfaces, installation.stand_ins,
                              directory.path() / "lib", environment);
    return run_command(command, environment, mask);
}

}  // namespace nimba::sim
