// SPDX-License-Identifier: MIT
#include "kernel_interface.hpp"

#include "test_bed_error.hpp"

#include <fmt/format.h>

#include <cctype>
#include <string>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

// The variable in which the stand-in looks for its struct size; CMakeLists.txt compiles the same
// name into it.
std::string struct_size_variable(const std::string& file)
{
    std::string name = "NIMBA_SIM_STRUCT_SIZE_";
    for (const char letter : file) {
        const auto code = static_cast<unsigned char>(letter);
        name += std::isalnum(code) != 0 ? static_cast<char>(std::toupper(code)) : '_';
    }
    return name;
}

}  // namespace

void install_kernel_interfaces(const std::vector<KernelInterface>& libraries,
                               const fs::path& stand_ins, const fs::path& directory,
                               Environment& environment)
{
    fs::create_directory(directory);
    for (const KernelInterface& library : libraries) {
        const fs::path stand_in = stand_ins / library.size_function / library.file;
        if (!fs::exists(stand_in)) {
            throw TestBedError{
                fmt::format("{} is missing: the installation is not complete", stand_in.native())};
        }
        fs::create_symlink(stand_in, directory / library.file);
        environment.set(struct_size_variable(library.file), std::to_string(library.struct_size));
    }
    environment.prepend("LD_LIBRARY_PATH", directory.native(), ':');
}

}  // namespace nimba::sim
