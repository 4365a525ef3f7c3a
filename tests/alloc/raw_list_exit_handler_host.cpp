// SPDX-License-Identifier: MIT
// A host that asks for pages of the raw list in an exit handler which it registered before it
// loaded the library: the library's static destructors have run by then, and the kept list is gone.
// The whole standard output is compared.
#include "abi/host.h"
#include "support/temp_directory.hpp"

#include <nimba_mgmt_interface.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

// What the exit handler uses; trivially destroyed, so that it outlives the host's static objects.
void* library;
_GFX_ALLOCATION_RAW_LIST page;
find_adapter adapters;

void ask(const char* when, std::int32_t index)
{
    const auto get = reinterpret_cast<decltype(&get_allocation_raw_list)>(
        symbol(library, "get_allocation_raw_list"));
    std::memset(&page, 0, sizeof page);
    page.page_index = index;
    const std::int32_t status = get(&page, &adapters);
    std::printf("host: %s, page %d: status %d, total %d, here %d, more %d, devices %d and %d\n",
                when, index, status, page.total_cnt, page.trasfer_cnt, page.more_flag,
                page.records[0].device, page.records[1].device);
}

void show_allocations(int first, int last)
{
    for (int device = first; device <= last; ++device) {
        const auto directory = std::filesystem::path{"allocations"} / std::to_string(device);
        std::filesystem::create_directories(directory);
        nimba::test::write_file(directory / "info", "device=" + std::to_string(device) + "\n");
    }
}

void ask_at_exit()
{
    if (library == nullptr) {
        return;  // it could not be loaded
    }
    show_allocations(122, 122);
    ask("exit handler", 1);
    ask("exit handler", 0);
    ask("exit handler", 1);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: raw_list_exit_handler_host LIBRARY EMPTY-DIRECTORY\n", stderr);
        return 2;
    }
    std::filesystem::current_path(argv[2]);
    show_allocations(101, 121);
    adapters.header.IS_VA_driver[0] = 1;
    if (std::atexit(ask_at_exit) != 0) {
        return 2;
    }
    library = load_library(argv[1]);
    std::strcpy(static_cast<char*>(symbol(library, "sys_kernel_debug_ID_dri_ADAPTER_path")), ".");
    ask("running", 0);
    ask("running", 1);
    return 0;
}
