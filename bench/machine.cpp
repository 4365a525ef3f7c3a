// SPDX-License-Identifier: MIT
#include "bench/machine.hpp"

#include <unistd.h>

#include <fmt/format.h>
#include <sys/utsname.h>

#include <fstream>

namespace nimba::bench {
namespace {

#if defined(__clang__)
constexpr char kCompiler[] = __VERSION__;
#else
constexpr char kCompiler[] = "GCC " __VERSION__;
#endif

// The value of the first "model name" line; not every architecture has one.
std::string processor_name()
{
    std::ifstream processors{"/proc/cpuinfo"};
    for (std::string line; std::getline(processors, line);) {
        const std::size_t colon = line.find(": ");
        if (line.starts_with("model name") && colon != std::string::npos) {
            return line.substr(colon + 2);
        }
    }
    return "unknown";
}

}  // namespace

std::string describe_machine()
{
    utsname kernel{};
    ::uname(&kernel);
    return fmt::format(
        "- Processor: {}, {} online\n"
        "- Kernel: {} {}, {}\n"
        "- Compiler: {}\n",
        processor_name(), ::sysconf(_SC_NPROCESSORS_ONLN), kernel.sysname, kernel.release,
        kernel.machine, kCompiler);
}

}  // namespace nimba::bench
