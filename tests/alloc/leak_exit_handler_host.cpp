// SPDX-License-Identifier: MIT
// A host that looks for leaks in an exit handler which it registered before it loaded the library:
// the library's static destructors have run by then. The whole standard output is compared.
#include "abi/host.h"
#include "support/temp_directory.hpp"

#include <nimba_mgmt_interface.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

// What the exit handler uses; trivially destroyed, so that it outlives the host's static objects.
void* library;
_GFX_MEMLEAK_INFO report;

void query(const char* when)
{
    const auto get =
        reinterpret_cast<decltype(&get_memleak_info)>(symbol(library, "get_memleak_info"));
    std::memset(&report, 0xa5, sizeof report);
    const std::int32_t status = get(&report);
    const _GFX_ALLOCATION_INFO& group = report.groups[0];
    std::printf("host: %s: status %d, handle %x, hits %d, sum %d, next %d\n", when, status,
                static_cast<unsigned>(group.handle), group.hit_count, group.sum_count,
                report.groups[1].sum_count);
}

void query_at_exit()
{
    if (library == nullptr) {
        return;  // it could not be loaded
    }
    query("exit handler");
    query("exit handler again");
}

void show_allocations()
{
    for (const char* name : {"1", "2", "3"}) {
        const auto directory = std::filesystem::path{"allocations"} / name;
        std::filesystem::create_directories(directory);
        nimba::test::write_file(directory / "info", "handle=1f\nwidth=640\nsize=4096\n");
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: leak_exit_handler_host LIBRARY EMPTY-DIRECTORY\n", stderr);
        return 2;
    }
    std::filesystem::current_path(argv[2]);
    show_allocations();
    if (std::atexit(query_at_exit) != 0) {
        return 2;
    }
    library = load_library(argv[1]);
    std::strcpy(static_cast<char*>(symbol(library, "sys_kernel_debug_ID_dri_ADAPTER_path")), ".");
    query("running");
    query("running again");
    return 0;
}
