// SPDX-License-Identifier: MIT
#include "kernel_interface.hpp"

#include "kernel_interface_symbols.hpp"
#include "test_bed_error.hpp"

#include <ios>

#include <fmt/core.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

std::string read_library(const fs::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    if (!stream) {
        throw TestBedError{
            fmt::format("{} is missing: the installation is not complete", file.native())};
    }
    return {std::istreambuf_iterator<char>{stream}, {}};
}

void write_file(const fs::path& file, const std::string& bytes)
{
    std::ofstream stream{file, std::ios::binary};
    stream << bytes;
    stream.close();
    if (!stream) {
        throw TestBedError{fmt::format("cannot write {}", file.native())};
    }
}

std::set<std::string> entry_points(const KernelInterface& library)
{
    std::set<std::string> names = library.counters;
    names.insert(library.size_function);
    return names;
}

}  // namespace

// The loader takes files that are the same one for the same library, so each is a copy.
void install_kernel_interfaces(const std::vector<KernelInterface>& libraries,
                               const fs::path& stand_in, const fs::path& directory,
                               Environment& environment)
{
    fs::create_directory(directory);
    for (const KernelInterface& library : libraries) {
        std::string bytes = read_library(stand_in);
        keep_symbols(bytes, entry_points(library));
        write_file(directory / library.file, bytes);
        write_file(directory / (library.file + ".settings"),
                   fmt::format("{} {}\n", library.struct_size, library.init_result));
    }
    environment.prepend("LD_LIBRARY_PATH", directory.native(), ':');
}

}  // namespace nimba::sim
