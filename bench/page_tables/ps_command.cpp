// SPDX-License-Identifier: MIT
#include "bench/page_tables/ps_command.hpp"

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace nimba::bench {
namespace {

std::string search_path_at_start()
{
    const char* const path = std::getenv("PATH");
    return path == nullptr ? "/usr/bin:/bin" : path;
}

}  // namespace

void select_ps(Ps ps)
{
    static const std::string system = search_path_at_start();
    static const std::string stub =
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "stub").string() + ":" +
        system;
    ::setenv("PATH", ps == Ps::kStub ? stub.c_str() : system.c_str(), 1);
}

}  // namespace nimba::bench
