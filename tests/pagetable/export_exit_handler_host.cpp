// SPDX-License-Identifier: MIT
// A host that asks for page tables in an exit handler which it registered before it loaded the
// library: the library's static destructors have run by then, and what it kept is gone. The whole
// standard output is compared.
#include "abi/host.h"
#include "driver_root.hpp"
#include "support/temp_directory.hpp"

#include <nimba_mgmt_interface.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

// What the exit handler uses; the driver outlives it.
void* library;
nimba::test::DriverRoot* driver;
_PAGETABLE_DATA page_tables[4];
_ALLOCATION_DATA allocations[4];

template <class Record>
int32_t query(const char* function, Record* records, uint32_t* count)
{
    using Query = int32_t(Record*, uint32_t*);
    return reinterpret_cast<Query*>(symbol(library, function))(records, count);
}

void show(const std::string& handle, const std::string& index)
{
    const auto device = driver->path() / "devices" / handle;
    const auto allocation = driver->path() / "allocations" / handle;
    std::filesystem::create_directories(device);
    std::filesystem::create_directories(allocation);
    nimba::test::write_file(device / "info", "pid = 2147483647\n");
    nimba::test::write_file(device / "vm_info", "0:" + index + ": entry addr:1000, buffer:a\n");
    nimba::test::write_file(allocation / "vm_info",
                            "=====vm node info=====\ndevice_pid = 1\ngpu_va = 2\nsize = 3\n");
}

// What is kept, without another reading.
void tell(const char* when)
{
    uint32_t count = 42;
    std::memset(page_tables, 0, sizeof page_tables);
    const int32_t status = query("get_pagetable_data", page_tables, nullptr);
    query<_ALLOCATION_DATA>("get_allocation_data", nullptr, &count);
    query("get_allocation_data", allocations, nullptr);
    std::printf("host: %s: status %d, entry %d, then %d, %u allocations\n", when, status,
                page_tables[0].index, page_tables[1].index, count);
}

void read(const char* when)
{
    uint32_t count = 42;
    const int32_t status = query<_PAGETABLE_DATA>("get_pagetable_data", nullptr, &count);
    std::printf("host: %s reads: status %d, %u entries\n", when, status, count);
    tell(when);
}

void ask_at_exit()
{
    if (library == nullptr) {
        return;  // it could not be loaded
    }
    tell("exit handler");
    read("exit handler");
    std::filesystem::remove_all(driver->path() / "devices" / "1");
    show("2", "9");
    read("exit handler");
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: export_exit_handler_host LIBRARY EMPTY-DIRECTORY\n", stderr);
        return 2;
    }
    ::setenv("TMPDIR", argv[2], 1);
    static nimba::test::DriverRoot root;
    driver = &root;
    show("1", "7");
    if (std::atexit(ask_at_exit) != 0) {
        return 2;
    }
    library = load_library(argv[1]);
    read("running");
    return 0;
}
